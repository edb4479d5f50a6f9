// The keys of one connection, derived step by step from the handshake's frames and the shared secrets.
// The functions are those of the Noise framework (revision 34, section 5.2) with SHA-256 and AES-256-GCM;
// docs/protocol.md has the order in which the handshake calls them.

import { digest, joined, sha256, utf8 } from './bytes.js';

const { subtle } = crypto;
const CURVE = { name: 'ECDH', namedCurve: 'P-256' };
const PROTOCOL = 'Brevanholt 2 P-256 AES-256-GCM SHA-256';
/** As the host's cryptoDeriveSharedKey() has them. */
const AGREEMENT_SALT = 'Brevanholt-v1';
const KEY = 32;

/** @typedef {{ publicKey: Uint8Array, privateKey: CryptoKey }} ConnectionKey */

/**
 * Four zero bytes and a counter of 64 bits.
 * @param {number} counter
 */
function nonceOf(counter) {
  const nonce = new Uint8Array(12);
  new DataView(nonce.buffer).setBigUint64(4, BigInt(counter));
  return nonce;
}

/**
 * HKDF with SHA-256 (RFC 5869).
 * @param {Uint8Array} salt
 * @param {Uint8Array} secret
 * @param {Uint8Array} info
 * @param {number} size
 */
async function hkdf(salt, secret, info, size) {
  const material = await subtle.importKey('raw', source(secret), 'HKDF', false, ['deriveBits']);
  const parameters = { name: 'HKDF', hash: 'SHA-256', salt: source(salt), info: source(info) };
  return new Uint8Array(await subtle.deriveBits(parameters, material, 8 * size));
}

/** A key pair for one connection, whose private half cannot be exported.
 *  @returns {Promise<ConnectionKey>} */
export async function connectionKey() {
  const pair = await subtle.generateKey(CURVE, false, ['deriveBits']);
  const publicKey = new Uint8Array(await subtle.exportKey('raw', pair.publicKey));
  return { publicKey, privateKey: pair.privateKey };
}

/**
 * The x-coordinate that two keys agree on. Throws where the public one is no point of the curve.
 * @param {ConnectionKey} own
 * @param {Uint8Array} publicKey
 */
export async function agreed({ privateKey }, publicKey) {
  const theirs = await subtle.importKey('raw', source(publicKey), CURVE, false, []);
  return new Uint8Array(await subtle.deriveBits({ ...CURVE, public: theirs }, privateKey, 256));
}

/**
 * What the other side's cryptoDeriveSharedKey() gives for this connection's key.
 * @param {ConnectionKey} own
 * @param {Uint8Array} lastingKey the other side's
 */
export async function agreedWithLasting(own, lastingKey) {
  return hkdf(utf8(AGREEMENT_SALT), await agreed(own, lastingKey), new Uint8Array(0), KEY);
}

export class KeySchedule {
  #hash;
  #chain;
  /** @type {CryptoKey | null} */
  #key = null;
  #sealed = 0;

  /** @param {Uint8Array} start */
  constructor(start) {
    this.#hash = start;
    this.#chain = start;
  }

  static async begin() {
    return new KeySchedule(await sha256(utf8(PROTOCOL)));
  }

  /** The digest of all that was mixed in by mixHash(). */
  get hash() {
    return this.#hash;
  }

  /** @param {Uint8Array} data */
  async mixHash(data) {
    this.#hash = await sha256(joined(this.#hash, data));
  }

  /** @param {Uint8Array} secret */
  async mixKey(secret) {
    const both = await hkdf(this.#chain, secret, new Uint8Array(0), 2 * KEY);
    this.#chain = both.slice(0, KEY);
    this.#key = await subtle.importKey('raw', both.slice(KEY), 'AES-GCM', false, [
      'encrypt',
      'decrypt',
    ]);
    this.#sealed = 0;
  }

  /** @param {Uint8Array} text */
  async seal(text) {
    const sealed = new Uint8Array(await subtle.encrypt(...this.#next(), source(text)));
    await this.mixHash(sealed);
    return sealed;
  }

  /**
   * Throws where it was not sealed by the other side at this step.
   * @param {Uint8Array} sealed
   */
  async open(sealed) {
    const text = new Uint8Array(await subtle.decrypt(...this.#next(), source(sealed)));
    await this.mixHash(sealed);
    return text;
  }

  /** What two persons compare: six digits, of what was mixed in so far. */
  async code() {
    const bytes = await digest('Brevanholt 2 code', this.#hash);
    const number = new DataView(bytes.buffer).getUint32(0) % 1_000_000;
    return String(number).padStart(6, '0');
  }

  /** The keys of the caller's records and of the callee's, and those of their confirmations. */
  async split() {
    const keys = await hkdf(this.#hash, this.#chain, utf8('Brevanholt 2 keys'), 4 * KEY);
    const [caller, callee, callerConfirms, calleeConfirms] = [0, 1, 2, 3].map((at) =>
      keys.slice(at * KEY, (at + 1) * KEY),
    );
    return { caller, callee, callerConfirms, calleeConfirms };
  }

  /** @returns {[AesGcmParams, CryptoKey]} */
  #next() {
    if (!this.#key) throw new Error('There is no key yet.');
    const iv = source(nonceOf(this.#sealed++));
    return [{ name: 'AES-GCM', iv, additionalData: source(this.#hash) }, this.#key];
  }
}

/** @param {Uint8Array} bytes */
const source = (bytes) => /** @type {BufferSource} */ (bytes);
