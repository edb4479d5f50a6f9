// Checks what documents hold, before anything else sees it.

import { logWarning } from '../engine/application.js';
import { isKey } from '../text/words.js';

/** Whether a value is one that a field may have.
 *  @typedef {(value: any) => boolean} Check */

/** @type {Check} */
export const isText = (value) => typeof value === 'string';

/** @type {Check} */
export const isFlag = (value) => typeof value === 'boolean';

/** A whole number of bytes, files or milliseconds. @type {Check} */
export const isCount = (value) => Number.isSafeInteger(value) && value >= 0;

/**
 * @param {readonly string[]} values
 * @returns {Check}
 */
export const isOneOf = (values) => (value) => values.includes(value);

/**
 * @param {Check} check
 * @returns {Check}
 */
export const isNullOr = (check) => (value) => value === null || check(value);

/**
 * @param {Check} check
 * @returns {Check}
 */
export const isMissingOr = (check) => (value) => value === undefined || check(value);

/**
 * @param {Check} check
 * @returns {Check}
 */
export const isListOf = (check) => (value) => Array.isArray(value) && value.every(check);

/**
 * An object whose fields fit.
 * @param {Record<string, Check>} fields
 * @returns {Check}
 */
export const isRecord = (fields) => (value) => unfitField(value, fields) === null;

/** @type {Check} */
export const isSentence = (value) =>
  isText(value) ||
  (isObject(value) &&
    isText(value.key) &&
    isKey(value.key) &&
    Object.values(value.values ?? {}).every(
      (part) => isCount(part) || isSentence(part) || (Array.isArray(part) && part.every(isText)),
    ));

/**
 * The entries of a list that fit, with the known fields only; the others are logged.
 * @param {string} document
 * @param {any} entries
 * @param {Record<string, Check>} fields
 * @returns {any[]}
 */
export function fittingEntries(document, entries, fields) {
  if (!Array.isArray(entries)) throw new TypeError('its content is not a list');
  return entries.flatMap((entry, number) => {
    const unfit = unfitField(entry, fields);
    if (unfit === null) return [knownFields(entry, fields)];
    logWarning(`${document}.json: entry ${number} is left out, because of “${unfit}”.`);
    return [];
  });
}

/**
 * The values of an object that fit; the others are logged and absent.
 * @param {string} document
 * @param {any} object
 * @param {Record<string, Check>} fields
 * @returns {Record<string, any>}
 */
export function fittingValues(document, object, fields) {
  if (!isObject(object)) throw new TypeError('its content is not an object');
  const fitting = Object.entries(fields).filter(([name, check]) => {
    const fits = check(object[name]);
    if (!fits) logWarning(`${document}.json: the value of “${name}” is left out.`);
    return fits;
  });
  return knownFields(object, Object.fromEntries(fitting));
}

/** @param {any} value */
const isObject = (value) => typeof value === 'object' && value !== null && !Array.isArray(value);

/**
 * @param {any} value
 * @param {Record<string, Check>} fields
 * @returns {string | null} the first field that does not fit
 */
function unfitField(value, fields) {
  if (!isObject(value)) return 'entry';
  return Object.keys(fields).find((name) => !fields[name](value[name])) ?? null;
}

/**
 * @param {any} object
 * @param {Record<string, Check>} fields
 */
const knownFields = (object, fields) =>
  Object.fromEntries(
    Object.keys(fields)
      .filter((name) => object[name] !== undefined)
      .map((name) => [name, object[name]]),
  );
