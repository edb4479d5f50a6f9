// What is offered: every file, folder and text, by its path from the receive folder, its size and its
// modification time. It travels in several records, so that neither side has to take in a hundred
// thousand entries at once.

import { hex, joined, jsonBytes, sha256, textOf } from './bytes.js';
import { TransferError } from './errors.js';
import { Limit } from './limits.js';
import { isReceivable } from './receivable_names.js';

/** @typedef {'file' | 'directory' | 'text'} Kind */
/** `modified`: in milliseconds since 1970; 0 for what is no file.
 *  @typedef {{ kind: Kind, path: string, size: number, modified: number }} Entry */

const KINDS = /** @type {const} */ (['file', 'directory', 'text']);

/**
 * The bodies of the records that carry the manifest.
 * @param {Entry[]} entries
 * @returns {Generator<Uint8Array>}
 */
export function* manifestRecords(entries) {
  for (let at = 0; at < entries.length; at += Limit.entriesPerRecord) {
    yield* recordsOf(entries.slice(at, at + Limit.entriesPerRecord));
  }
}

/**
 * One record, or more where it would be too large. One entry always fits.
 * @param {Entry[]} entries
 * @returns {Generator<Uint8Array>}
 */
function* recordsOf(entries) {
  const body = jsonBytes(
    entries.map(({ kind, path, size, modified }) => [KINDS.indexOf(kind), path, size, modified]),
  );
  if (body.length <= Limit.control) return yield body;
  const middle = entries.length >> 1;
  yield* recordsOf(entries.slice(0, middle));
  yield* recordsOf(entries.slice(middle));
}

/** Puts together what a manifest's records say, and throws where nobody would send it in good faith. */
export class ManifestReader {
  /** @type {Entry[]} */
  #entries = [];
  /** @type {Map<string, Kind>} */
  #kinds = new Map();
  #bytes = 0;
  #total = 0;
  #texts = 0;
  /** @type {Promise<Uint8Array>[]} */
  #digests = [];

  #convert;

  /** @param {(entry: Entry) => Entry} [convert] what is offered to what is received */
  constructor(convert = (entry) => entry) {
    this.#convert = convert;
  }

  /** @param {Uint8Array} body of the next record */
  add(body) {
    this.#bytes += body.length;
    this.#digests.push(sha256(body));
    const listed = listIn(body);
    const count = this.#entries.length + listed.length;
    if (this.#bytes > Limit.manifestBytes || count > Limit.entries) throw notUnderstood();
    for (const entry of listed) this.#take(entryOf(entry));
  }

  /** @returns {Entry[]} */
  finish() {
    if (this.#entries.length === 0) throw notUnderstood();
    /** @type {Set<string>} */
    const folders = new Set();
    let last = '';
    for (const path of this.#kinds.keys()) {
      // Files mostly come folder by folder.
      const cut = Math.max(0, path.lastIndexOf('/'));
      if (cut === last.length && path.startsWith(last)) continue;
      last = path.slice(0, cut);
      for (let at = path.lastIndexOf('/'); at > 0; at = path.lastIndexOf('/', at - 1)) {
        const folder = path.slice(0, at);
        if (folders.has(folder)) break;
        if ((this.#kinds.get(folder) ?? 'directory') !== 'directory') throw notUnderstood();
        folders.add(folder);
      }
    }
    return this.#entries;
  }

  /** By which an offer is recognised that was accepted before. */
  async digest() {
    return hex(await sha256(joined(...(await Promise.all(this.#digests)))));
  }

  /** @param {Entry} entry */
  #take(entry) {
    this.#total += entry.size;
    if (entry.kind === 'text') this.#texts += entry.size;
    else if (this.#kinds.has(entry.path)) throw notUnderstood();
    if (entry.kind !== 'text') this.#kinds.set(entry.path, entry.kind);
    if (this.#texts > Limit.textBytes || !Number.isSafeInteger(this.#total)) throw notUnderstood();
    this.#entries.push(this.#convert(entry));
  }
}

/** @param {{ kind: string }[]} entries */
export const fileCount = (entries) => entries.filter(({ kind }) => kind !== 'directory').length;

/** @param {{ size: number }[]} entries */
export const totalSize = (entries) => entries.reduce((sum, { size }) => sum + size, 0);

const notUnderstood = () => new TransferError('not-understood');

/** @param {Uint8Array} body */
function listIn(body) {
  try {
    const listed = JSON.parse(textOf(body));
    if (Array.isArray(listed)) return listed;
  } catch {
    // As below.
  }
  throw notUnderstood();
}

/**
 * @param {any} entry
 * @returns {Entry}
 */
function entryOf(entry) {
  if (!Array.isArray(entry) || entry.length !== 4) throw notUnderstood();
  const [kind, path, size, modified] = entry;
  const isKind = Number.isInteger(kind) && kind >= 0 && kind < KINDS.length;
  const most = [Number.MAX_SAFE_INTEGER, 0, Limit.textBytes][kind];
  if (!isKind || !isCount(size) || size > most || !isCount(modified) || !isReceivable(path)) {
    throw notUnderstood();
  }
  return { kind: KINDS[kind], path, size, modified };
}

/** @param {any} number */
const isCount = (number) => Number.isSafeInteger(number) && number >= 0;
