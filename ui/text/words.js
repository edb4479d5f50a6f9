// The texts of the window, from the catalogue of the person's language.

import { de } from './catalogue/de.js';
import { en } from './catalogue/en.js';
import { currentLanguage, listText, numberText, pluralForm, useLocale } from './locale.js';

/** @typedef {import('./catalogue/en.js').Message} Message */
/** @typedef {keyof typeof en} Key */
/** Lists are joined, numbers written in the person's way. @typedef {string | number | string[]} Value */
/** A message of the catalogue and the values of its placeholders: what is kept of something said, so that
 *  it can be said again in another language. A text is what earlier versions kept.
 *  @typedef {string | { key: Key, values?: Record<string, Value | Sentence> }} Sentence */

/** @type {Record<string, Record<Key, Message>>} */
const CATALOGUES = { en, de };
/** @type {Record<Key, Message>} */
let catalogue = en;

/**
 * Selects the catalogue of the first of the person's languages that there is one for.
 * @param {import('./locale.js').HostLocale} host
 * @param {Record<string, Record<Key, Message>>} [catalogues] by language
 */
export function speak(host, catalogues = CATALOGUES) {
  useLocale(host, Object.keys(catalogues));
  catalogue = catalogues[currentLanguage()];
}

/**
 * @param {string} key
 * @returns {key is Key}
 */
export const isKey = (key) => Object.hasOwn(en, key);

/**
 * A text of the catalogue. Of one with plural forms {count} decides.
 * @param {Key} key
 * @param {Record<string, Value>} [values] of its placeholders
 */
export function words(key, values = {}) {
  const message = catalogue[key];
  const text =
    typeof message === 'string'
      ? message
      : (message[/** @type {'other'} */ (pluralForm(Number(values.count)))] ?? message.other);
  return text.replace(/\{(\w+)\}/g, (_, name) => valueText(values[name]));
}

/**
 * @param {Sentence} sentence
 * @returns {string}
 */
export function sentenceText(sentence) {
  if (typeof sentence === 'string') return sentence;
  const values = Object.entries(sentence.values ?? {}).map(([name, value]) => [
    name,
    typeof value === 'object' && !Array.isArray(value) ? sentenceText(value) : value,
  ]);
  return words(sentence.key, Object.fromEntries(values));
}

/** @param {Value} value */
function valueText(value) {
  if (Array.isArray(value)) return listText(value);
  return typeof value === 'number' ? numberText(value) : value;
}
