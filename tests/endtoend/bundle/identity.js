// The identity and what is made of it, with a peer whose cryptography is the page's own.

import { call } from './outcome.js';

const MIB = 1 << 20;
const GCM = { name: 'AES-GCM', tagLength: 128 };

/** @param {Uint8Array} bytes */
const hex = (bytes) => [...bytes].map((byte) => byte.toString(16).padStart(2, '0')).join('');

/** @param {string} text */
const ascii = (text) => new TextEncoder().encode(text);

/**
 * @param {Uint8Array} one
 * @param {Uint8Array} other
 */
const areEqual = (one, other) =>
  one.length === other.length && one.every((byte, index) => byte === other[index]);

/** @param {number} size */
function pattern(size) {
  const bytes = new Uint8Array(size);
  for (let index = 0; index < size; ++index) bytes[index] = (index * 2654435761) >>> 24;
  return bytes;
}

/** What a peer derives from the device's public key: ECDH, HKDF-SHA-256, AES-256-GCM.
 * @param {CryptoKey} privateKey @param {Uint8Array} publicKey */
async function peersKey(privateKey, publicKey) {
  const curve = { name: 'ECDH', namedCurve: 'P-256' };
  const device = await crypto.subtle.importKey('raw', publicKey, curve, true, []);
  const secret = await crypto.subtle.deriveBits({ name: 'ECDH', public: device }, privateKey, 256);
  const material = await crypto.subtle.importKey('raw', secret, 'HKDF', false, ['deriveBits']);
  const derived = await crypto.subtle.deriveBits(
    { name: 'HKDF', hash: 'SHA-256', salt: ascii('Brevanholt-v1'), info: new Uint8Array() },
    material, 256);
  return new Uint8Array(derived);
}

/** @param {Uint8Array} publicKey */
async function withPeer(publicKey) {
  const peer = await crypto.subtle.generateKey({ name: 'ECDH', namedCurve: 'P-256' }, false,
    ['deriveBits']);
  const theirs = new Uint8Array(await crypto.subtle.exportKey('raw', peer.publicKey));
  const { value: key } = await call('cryptoDeriveSharedKey', { publicKey: theirs });
  const peerKey = await peersKey(peer.privateKey, publicKey);
  const cipher = await crypto.subtle.importKey('raw', peerKey, 'AES-GCM', false,
    ['encrypt', 'decrypt']);

  const data = ascii('naïve 🎈');
  const { value: sealed } = await call('cryptoEncrypt', { key, data });
  const opened = await crypto.subtle.decrypt({ ...GCM, iv: sealed.slice(0, 12) }, cipher,
    sealed.slice(12));
  const iv = crypto.getRandomValues(new Uint8Array(12));
  const ciphertext = await crypto.subtle.encrypt({ ...GCM, iv }, cipher, data);
  const answer = new Uint8Array([...iv, ...new Uint8Array(ciphertext)]);
  const { value: answered } = await call('cryptoDecrypt', { key, data: answer });
  return {
    sameKey: areEqual(key, peerKey),
    peerOpens: areEqual(new Uint8Array(opened), data),
    deviceOpens: areEqual(answered, data),
  };
}

/** @param {number} size */
async function sealAndOpen(size) {
  const key = pattern(32);
  const data = pattern(size);
  const { value: sealed } = await call('cryptoEncrypt', { key, data });
  const { value: opened } = await call('cryptoDecrypt', { key, data: sealed });
  sealed[size >> 1] ^= 1;
  return {
    sealed: sealed.length - size,
    opened: areEqual(opened, data),
    flipped: await call('cryptoDecrypt', { key, data: sealed }),
  };
}

export async function scenario() {
  const { value: publicKey } = await call('cryptoCreateIdentity');
  return {
    publicKey: hex(publicKey),
    peer: await withPeer(publicKey),
    empty: await sealAndOpen(0),
    large: await sealAndOpen(16 * MIB),
    badPoint: await call('cryptoDeriveSharedKey', { publicKey: pattern(65) }),
    badKey: await call('cryptoEncrypt', { key: pattern(5), data: pattern(5) }),
  };
}
