// What the console knows of the arguments that the host's methods take.

import { METHODS } from '../platform.js';

/** @type {Record<string, unknown>} */
const EMPTY = {
  string: '',
  boolean: true,
  integer: 256,
  bytes: { base64: '' },
  strings: [],
  snapshot: null,
  snapshots: [],
};

export const methodNames = Object.keys(METHODS);

/**
 * @param {string} method
 * @returns {readonly (readonly [string, string])[]} names and types; none of a method that is not known
 */
export const expectedOf = (method) =>
  Object.hasOwn(METHODS, method) ? METHODS[/** @type {keyof typeof METHODS} */ (method)].takes : [];

/**
 * A template of the arguments.
 * @param {string} method
 */
export function skeleton(method) {
  const expected = expectedOf(method);
  if (expected.length === 0) return '';
  const filled = expected.map(([key, type]) => [key, EMPTY[type.replace('?', '')]]);
  return JSON.stringify(Object.fromEntries(filled), null, 2);
}
