// Text from other devices, made safe to show: names of devices and files, and texts that people wrote.
//
// Invisible characters are dropped or replaced by “_”, none changes the direction of what follows, and
// stacks of accents and very long names are cut. A received file is saved under the name that was shown,
// so the same functions make both.

import { isSimpleName, isSimplePath } from './simple_names.js';

/** Longest name of a file, in bytes of UTF-8. */
const NAME_BYTES = 255;

const CONTROL = /[\p{Cc}\p{Cs}\p{Zl}\p{Zp}]/gu;
/** Letters and symbols without ink: Braille blank, Hangul fillers, musical null notehead. */
const BLANK = /[\u{2800}\u{3164}\u{115F}\u{1160}\u{FFA0}\u{1D159}]/gu;

const INVISIBLE = /[\p{Cf}\p{DI}]/gu;

/** Scripts whose letters change their shape with a joiner between them. */
const JOINING = String.raw`[\p{sc=Arab}\p{sc=Syrc}\p{sc=Mong}\p{sc=Nkoo}\p{sc=Deva}\p{sc=Beng}\p{sc=Guru}\p{sc=Gujr}\p{sc=Orya}\p{sc=Taml}\p{sc=Telu}\p{sc=Knda}\p{sc=Mlym}\p{sc=Sinh}\p{sc=Khmr}]`;
/** Invisible characters that writing needs, with what stands before and after them. */
const MEANT = [
  {
    which: /[\u200C\u200D]/,
    before: RegExp(`${JOINING}\\p{M}*$`, 'u'),
    after: RegExp(`^${JOINING}`, 'u'),
  },
  { which: /\u200D/, before: /\p{ExtPict}[\uFE0F\p{EMod}]*$/u, after: /^\p{ExtPict}/u },
  { which: /\uFE0F/, before: /\p{ExtPict}$/u, after: /^/ },
  { which: /\uFE0F/, before: /[0-9#*]$/, after: /^\u20E3/ },
];
/** UTF-16 units around an invisible character that decide whether it is meant. */
const AROUND = 8;

/** More accents on one letter than any language writes. */
const PILE = /(\p{M}{5})\p{M}+/gu;

const RIGHT_TO_LEFT =
  /[\u0590-\u08FF\uFB1D-\uFDFF\uFE70-\uFEFC\u{10800}-\u{10FFF}\u{1E800}-\u{1EFFF}]/u;

const clusters = new Intl.Segmenter(undefined, { granularity: 'grapheme' });
/** More UTF-16 units than a cluster has once its accents are cut. */
const CLUSTER_UNITS = 32;

/**
 * @param {string} text
 * @param {number} at
 * @param {string} character
 */
function isMeant(text, at, character) {
  const start = text.slice(Math.max(0, at - AROUND), at);
  const end = text.slice(at + character.length, at + AROUND);
  return MEANT.some(
    ({ which, before, after }) => which.test(character) && before.test(start) && after.test(end),
  );
}

/** @param {string} text */
const visible = (text) =>
  text
    .replace(INVISIBLE, (character, at) => (isMeant(text, at, character) ? character : ''))
    .replace(PILE, '$1');

/**
 * A name on one line. Never empty.
 * @param {string} text
 */
export const plainName = (text) =>
  visible(text.replace(CONTROL, '_').replace(BLANK, '_')).trim() || '_';

/**
 * The name of a file or folder, as it is shown and saved: also without what separates folders.
 * @param {string} text
 */
export function plainFileName(text) {
  if (isSimpleName(text)) return text;
  let name = plainName(text).replace(/[/\\:]/g, '_');
  if (name === '.' || name === '..') name = name.replaceAll('.', '_');
  for (let most = NAME_BYTES; new TextEncoder().encode(name).length > NAME_BYTES; --most) {
    name = shortened(name, most);
  }
  return name;
}

/**
 * A path below the receive folder, as it is shown and saved.
 * @param {string} path with “/” between its names
 */
export const plainPath = (path) =>
  isSimplePath(path) ? path : path.split('/').map(plainFileName).join('/');

/**
 * What somebody wrote, on its own lines.
 * @param {string} text
 */
export const plainLines = (text) =>
  text
    .split(/\r\n|[\r\n\u2028\u2029]/)
    .map((line) =>
      visible(
        line.replace(CONTROL, (control) => (control === '\t' ? '\t' : '_')).replace(BLANK, '_'),
      ),
    )
    .join('\n');

/**
 * At most so many clusters (what a person counts as characters), with “…” for what is left out of
 * the middle: the end of a file's name says what kind of file it is.
 * @param {string} text
 * @param {number} most
 */
export function shortened(text, most) {
  const units = most * CLUSTER_UNITS;
  const head = clustersIn(text.slice(0, units));
  if (text.length <= units && head.length <= most) return text;
  const tail = text.length <= units ? head : clustersIn(text.slice(-units));
  const kept = Math.floor((most - 1) / 3);
  return `${head.slice(0, most - 1 - kept).join('')}…${kept > 0 ? tail.slice(-kept).join('') : ''}`;
}

/**
 * The beginning of a text.
 * @param {string} text
 * @param {number} mostClusters
 * @param {number} mostLines
 */
export function excerpt(text, mostClusters, mostLines) {
  const start = text.slice(0, mostClusters * CLUSTER_UNITS);
  const lines = plainLines(start).split('\n');
  const parts = clustersIn(lines.slice(0, mostLines).join('\n'));
  const isWhole =
    start.length === text.length && lines.length <= mostLines && parts.length <= mostClusters;
  return isWhole ? parts.join('') : `${parts.slice(0, mostClusters).join('')}…`;
}

/**
 * A name for use in a sentence or beside other text: a right-to-left name stays together and does not
 * reorder the text around it, and a file's extension stays at its end (Unicode's
 * left-to-right isolate, UAX #9).
 * @param {string} text
 */
export const isolated = (text) => (RIGHT_TO_LEFT.test(text) ? `\u2066${text}\u2069` : text);

/** @param {string} text */
const clustersIn = (text) => Array.from(clusters.segment(text), ({ segment }) => segment);
