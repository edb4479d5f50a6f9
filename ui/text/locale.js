// The language of the window, and how the person writes dates and numbers.

/** The first is the language of texts that have no other. */
export const LANGUAGES = /** @type {const} */ (['en', 'de']);

/** Languages that are written from right to left (ISO 639). */
const RIGHT_TO_LEFT = ['ar', 'dv', 'fa', 'he', 'ps', 'sd', 'ug', 'ur', 'yi'];

/** As the host names them: BCP 47, without what is not known.
 *  @typedef {{ languages: string[], time: string, numbers: string }} HostLocale
 *    languages: those that the person reads, the best first
 *    time, numbers: whose customs dates and numbers follow */

let language = 'en';
let time = 'en';
let numbers = 'en';
/** @type {Map<string, any>} */
const kept = new Map();

/** @param {string} tag */
const known = (tag) => {
  try {
    return new Intl.Locale(tag);
  } catch {
    return null;
  }
};

/**
 * The window's language with the customs of another place: “en” and “de-AT” give “en-AT”, so that no
 * foreign month stands in a sentence.
 * @param {string} tag
 */
function withCustomsOf(tag) {
  const place = known(tag);
  if (!place) return language;
  if (place.language === language) return place.toString();
  return place.region ? new Intl.Locale(language, { region: place.region }).toString() : language;
}

/**
 * @param {HostLocale} host
 * @param {readonly string[]} [available]
 */
export function useLocale(host, available = LANGUAGES) {
  const wanted = host.languages.map((tag) => known(tag)?.language);
  language = wanted.find((one) => one && available.includes(one)) ?? available[0];
  time = withCustomsOf(host.time);
  numbers = withCustomsOf(host.numbers);
  kept.clear();
}

/** The language of the texts. */
export const currentLanguage = () => language;

export const isRightToLeft = () => RIGHT_TO_LEFT.includes(language);

/**
 * @template T
 * @param {string} key
 * @param {() => T} make
 * @returns {T} made once for each language
 */
function once(key, make) {
  if (!kept.has(key)) kept.set(key, make());
  return kept.get(key);
}

/** @param {number} count */
export const pluralForm = (count) =>
  once('plural', () => new Intl.PluralRules(language)).select(count);

/** @param {string[]} parts */
export const listText = (parts) =>
  once('list', () => new Intl.ListFormat(language, { type: 'conjunction' })).format(parts);

/**
 * @param {number} value
 * @param {Intl.NumberFormatOptions} [options]
 */
export const numberText = (value, options) =>
  once(JSON.stringify(options ?? null), () => new Intl.NumberFormat(numbers, options)).format(
    value,
  );

/**
 * @param {Date} moment
 * @param {Intl.DateTimeFormatOptions} options
 */
export const dateText = (moment, options) =>
  once(JSON.stringify(options), () => new Intl.DateTimeFormat(time, options)).format(moment);

/** Compares names as a person sorts them.
 *  @param {string} left
 *  @param {string} right */
export const byName = (left, right) =>
  once('order', () => new Intl.Collator(language, { numeric: true })).compare(left, right);
