// Converts values of the channel to text and back. Byte arrays are written as {"base64": "…"} or
// {"hex": "…"}, and a float64 without a fraction as {"float64": 1}.

import { Float64 } from '../engine/codec.js';
import { words } from '../text/words.js';
import { expectedOf } from './console_methods.js';

const MOST_BYTES = 3 * 1024;
const MOST_TEXT = 20_000;
/** Entries of a list of which some may be seen: each takes a line. */
const MOST_ENTRIES = 10_000;

/** @param {string} text */
function bytesOfHex(text) {
  const digits = text.replace(/[\s:]/g, '');
  if (!/^([0-9a-f]{2})*$/i.test(digits)) throw new Error(words('console.noHex', { text }));
  return Uint8Array.from(digits.match(/../g) ?? [], (pair) => parseInt(pair, 16));
}

/** @param {string} text */
function bytesOfBase64(text) {
  try {
    return Uint8Array.from(atob(text), (letter) => letter.charCodeAt(0));
  } catch {
    throw new Error(words('console.noBase64', { text }));
  }
}

/** @param {any} value */
function revived(value) {
  const keys = value && typeof value === 'object' ? Object.keys(value).join() : '';
  if (keys === 'base64' && typeof value.base64 === 'string') return bytesOfBase64(value.base64);
  if (keys === 'hex' && typeof value.hex === 'string') return bytesOfHex(value.hex);
  if (keys === 'float64' && typeof value.float64 === 'number') return new Float64(value.float64);
  return value;
}

/**
 * @param {string} text JSON; nothing at all is null
 * @returns {unknown}
 */
export function parseArguments(text) {
  if (text.trim() === '') return null;
  try {
    return JSON.parse(text, (_key, value) => revived(value));
  } catch (error) {
    if (error instanceof SyntaxError)
      throw new Error(words('console.noJson', { why: error.message }), { cause: error });
    throw error;
  }
}

/** @param {Uint8Array} bytes */
function bytesText(bytes) {
  const kept = bytes.subarray(0, MOST_BYTES);
  const base64 = btoa(Array.from(kept, (byte) => String.fromCharCode(byte)).join(''));
  return kept.length === bytes.length ? { base64 } : { base64, bytesInAll: bytes.length };
}

/**
 * A value in the form in which it can be typed in; very long ones are cut.
 * @param {unknown} value
 */
export function valueText(value) {
  const text = JSON.stringify(
    value ?? null,
    (_key, part) => {
      if (part instanceof Uint8Array) return bytesText(part);
      if (ArrayBuffer.isView(part))
        return Array.from(/** @type {any} */ (part).subarray(0, MOST_ENTRIES), (item) =>
          typeof item === 'bigint' ? String(item) : item,
        );
      if (typeof part === 'bigint') return String(part);
      if (part instanceof Map) return [...part].slice(0, MOST_ENTRIES);
      if (Array.isArray(part)) return part.slice(0, MOST_ENTRIES);
      return part;
    },
    2,
  );
  const isCut = text.length > MOST_TEXT;
  return isCut ? `${text.slice(0, MOST_TEXT)}\n${words('console.cut')}` : text;
}

/** @param {unknown} error */
export function errorText(error) {
  const { code, message, details } = /** @type {any} */ (error ?? {});
  return code === undefined
    ? String(message ?? error)
    : `${code}: ${message}${details === null || details === undefined ? '' : `\n${valueText(details)}`}`;
}

/** @type {Record<string, (value: any) => boolean>} */
const IS = {
  string: (value) => typeof value === 'string',
  boolean: (value) => typeof value === 'boolean',
  integer: (value) => Number.isInteger(value),
  bytes: (value) => value instanceof Uint8Array,
  strings: (value) => Array.isArray(value),
  map: (value) => value !== null && typeof value === 'object',
};

/**
 * Checks the arguments of a call: the host ends the program where a required one is missing.
 * @param {string} method
 * @param {any} args
 * @returns {string | null} a sentence
 */
export function objection(method, args) {
  const expected = expectedOf(method);
  if (expected.length === 0) return null;
  if (!IS.map(args) || Array.isArray(args)) {
    return words('console.takesMap', { method });
  }
  for (const [key, type] of expected) {
    if (type.endsWith('?') || IS[type](args[key])) continue;
    return words('console.requires', { method, key, type });
  }
  return null;
}
