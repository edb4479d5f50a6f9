// Small helpers over bytes.

const encoder = new TextEncoder();
const decoder = new TextDecoder('utf-8', { fatal: true });

/** @param {string} text */
export const utf8 = (text) => encoder.encode(text);

/**
 * Throws where the bytes are not UTF-8.
 * @param {Uint8Array} bytes
 */
export const textOf = (bytes) => decoder.decode(bytes);

/** @param {unknown} value */
export const jsonBytes = (value) => utf8(JSON.stringify(value));

/**
 * An object; throws where the bytes are anything else.
 * @param {Uint8Array} bytes
 * @returns {Record<string, any>}
 */
export function objectOf(bytes) {
  const value = JSON.parse(textOf(bytes));
  if (typeof value !== 'object' || value === null || Array.isArray(value)) {
    throw new TypeError('Not an object.');
  }
  return value;
}

/** @param {Uint8Array} bytes */
export const hex = (bytes) => [...bytes].map((byte) => byte.toString(16).padStart(2, '0')).join('');

/**
 * Null where the text is not so many bytes in lower-case hexadecimal.
 * @param {unknown} text
 * @param {number} size
 */
export function unhex(text, size) {
  if (typeof text !== 'string' || text.length !== 2 * size || !/^[0-9a-f]*$/.test(text))
    return null;
  return Uint8Array.from({ length: size }, (_, at) => parseInt(text.slice(2 * at, 2 * at + 2), 16));
}

/**
 * @param {Uint8Array} left
 * @param {Uint8Array} right
 */
export function equalBytes(left, right) {
  return left.length === right.length && left.every((byte, at) => byte === right[at]);
}

/** @param {...Uint8Array} parts */
export function joined(...parts) {
  const whole = new Uint8Array(parts.reduce((size, part) => size + part.length, 0));
  let at = 0;
  for (const part of parts) {
    whole.set(part, at);
    at += part.length;
  }
  return whole;
}

/** @param {number} size */
export const randomBytes = (size) => crypto.getRandomValues(new Uint8Array(size));

/**
 * SHA-256 (FIPS 180-4).
 * @param {Uint8Array} bytes
 */
export async function sha256(bytes) {
  return new Uint8Array(await crypto.subtle.digest('SHA-256', /** @type {BufferSource} */ (bytes)));
}

/**
 * SHA-256 of a label and of parts, each with its size before it, so that no two lists of parts are
 * the same bytes.
 * @param {string} label
 * @param {...Uint8Array} parts
 */
export function digest(label, ...parts) {
  const sized = [utf8(label), ...parts].flatMap((part) => {
    const size = new Uint8Array(4);
    new DataView(size.buffer).setUint32(0, part.length);
    return [size, part];
  });
  return sha256(joined(...sized));
}

/**
 * Eight groups of four digits of a public key's SHA-256, for people to compare.
 * @param {Uint8Array} key
 */
export async function fingerprintOf(key) {
  const hash = hex(await sha256(key));
  return (hash.slice(0, 32).match(/.{4}/g) ?? []).join(' ');
}
