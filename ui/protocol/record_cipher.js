// Seals and opens records with AES-256-GCM (NIST SP 800-38D), one direction of one connection each.

/**
 * Four zero bytes and a counter of 64 bits, as in the Noise framework.
 * @param {number} counter
 */
export function nonceOf(counter) {
  const nonce = new Uint8Array(12);
  new DataView(nonce.buffer).setBigUint64(4, BigInt(counter));
  return nonce;
}

/** Above this a counter is no longer an exact number, long after a key is worn out. */
const LAST_COUNTER = 2 ** 48;

export class RecordCipher {
  #key;
  #counter = 0;

  /** @param {Uint8Array} key 32 bytes that nothing else is sealed with */
  constructor(key) {
    this.#key = crypto.subtle.importKey('raw', source(key), 'AES-GCM', false, [
      'encrypt',
      'decrypt',
    ]);
  }

  /**
   * The body and the tag. Records have to be sealed in the order in which they are sent.
   * @param {Uint8Array} header authenticated with it
   * @param {Uint8Array} body
   */
  async seal(header, body) {
    const parameters = this.#next(header);
    return new Uint8Array(await crypto.subtle.encrypt(parameters, await this.#key, source(body)));
  }

  /**
   * Throws where it is not the other side's next record.
   * @param {Uint8Array} header
   * @param {Uint8Array} sealed
   */
  async open(header, sealed) {
    const parameters = this.#next(header);
    return new Uint8Array(await crypto.subtle.decrypt(parameters, await this.#key, source(sealed)));
  }

  /** @param {Uint8Array} header */
  #next(header) {
    if (this.#counter >= LAST_COUNTER) throw new Error('The key was used too often.');
    const iv = source(nonceOf(this.#counter++));
    return { name: 'AES-GCM', iv, additionalData: source(header) };
  }
}

/** @param {Uint8Array} bytes */
const source = (bytes) => /** @type {BufferSource} */ (bytes);
