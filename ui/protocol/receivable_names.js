// Names that a device can receive, and others for those that it cannot: the host that publishes a file
// refuses “:”, “\”, control characters and names above 255 bytes.

import { isSimpleName, isSimplePath } from '../text/simple_names.js';
import { utf8 } from './bytes.js';
import { Limit } from './limits.js';

// eslint-disable-next-line no-control-regex
const REFUSED = /[:\\\u0000-\u001f]/;
// eslint-disable-next-line no-control-regex
const REFUSED_ALL = /[\\\u0000-\u001f]/g;
const LONE_SURROGATE = /\p{Cs}/u;
const LONE_SURROGATES = /\p{Cs}/gu;
const EXTENSION = /(?<=.)\.[^.\s]{1,16}$/;

const characters = new Intl.Segmenter('en', { granularity: 'grapheme' });

/** @param {any} path */
export function isReceivable(path) {
  if (typeof path !== 'string' || path.length > Limit.pathBytes) return false;
  // Each name takes two characters, with its “/”, so a path this short is not too deep.
  if (path.length < 2 * Limit.depth && isSimplePath(path)) return true;
  if (REFUSED.test(path)) return false;
  if (path.trim() !== path || LONE_SURROGATE.test(path)) return false;
  if (isAbove(path, Limit.pathBytes) || isLong(path)) return false;
  const pieces = path.split('/');
  return pieces.length <= Limit.depth && pieces.every(isName);
}

/** @param {string} name */
const isName = (name) =>
  name !== '' && name !== '.' && name !== '..' && !isAbove(name, Limit.nameBytes);

/**
 * Whether a text has more bytes than that. A UTF-16 unit takes three of them at most.
 * @param {string} text
 * @param {number} bytes
 */
const isAbove = (text, bytes) => 3 * text.length > bytes && utf8(text).length > bytes;

/** @param {string} path */
function isLong(path) {
  if (path.length <= Limit.pathCharacters) return false;
  return [...characters.segment(path)].length > Limit.pathCharacters;
}

/**
 * Finds a path for each file and folder that can be received and that no other one has.
 *
 * Folders of the same path become one; of files, the second becomes “name (1)”.
 */
export class ReceivablePaths {
  /** What is used, and for what. @type {Map<string, string>} */
  #used = new Map();
  /** Where the content of a folder goes, by the path that was wanted. @type {Map<string, string>} */
  #folders = new Map();
  /** How often a path was wanted again. @type {Map<string, number>} */
  #again = new Map();

  /**
   * Null where there is none, as for one that is too deep.
   * @param {string} path
   * @param {string} kind
   * @returns {string | null}
   */
  take(path, kind) {
    const cut = path.lastIndexOf('/');
    const above = cut < 0 ? '' : `${this.#folderFor(path.slice(0, cut))}/`;
    const wanted = above + receivableName(path.slice(cut + 1));
    const isFolder = kind === 'directory';
    const free = isFolder && this.#used.get(wanted) === kind ? wanted : this.#free(wanted);
    const found = free === path ? path : free; // so that memory holds the text once
    if (!isReceivable(found)) return null;
    this.#used.set(found, kind);
    if (isFolder) this.#folders.set(path, found);
    return found;
  }

  /** @param {string} path */
  #folderFor(path) {
    const found = this.#folders.get(path) ?? path.split('/').map(receivableName).join('/');
    if (!this.#folders.has(path)) this.#folders.set(path, found);
    return found;
  }

  /** @param {string} wanted */
  #free(wanted) {
    if (!this.#used.has(wanted)) return wanted;
    const cut = wanted.lastIndexOf('/') + 1;
    const name = wanted.slice(cut);
    const extension = EXTENSION.exec(name)?.[0] ?? '';
    for (let number = (this.#again.get(wanted) ?? 0) + 1; ; ++number) {
      const suffix = ` (${number})${extension}`;
      const base = shortened(name.slice(0, name.length - extension.length), suffix);
      const path = wanted.slice(0, cut) + base + suffix;
      if (this.#used.has(path)) continue;
      this.#again.set(wanted, number);
      return path;
    }
  }
}

/** @param {string} name */
function receivableName(name) {
  if (isSimpleName(name)) return name;
  const clean =
    name.replace(LONE_SURROGATES, '\ufffd').replaceAll(':', '-').replace(REFUSED_ALL, '_').trim() ||
    '_';
  if (utf8(clean).length <= Limit.nameBytes) return clean;
  const extension = EXTENSION.exec(clean)?.[0] ?? '';
  return shortened(clean.slice(0, clean.length - extension.length), extension) + extension;
}

/**
 * As many characters as leave room for what follows them.
 * @param {string} name
 * @param {string} rest
 */
function shortened(name, rest) {
  const room = Limit.nameBytes - utf8(rest).length;
  if (utf8(name).length <= room) return name;
  let size = 0;
  let kept = '';
  for (const { segment } of characters.segment(name)) {
    size += utf8(segment).length;
    if (size > room) break;
    kept += segment;
  }
  return kept.trimEnd() || '_';
}
