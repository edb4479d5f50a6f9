// What is offered: every file, folder and text, by its path from the receive folder and its size.

import { jsonBytes, textOf, utf8 } from './bytes.js';
import { TransferError } from './errors.js';
import { Limit } from './limits.js';

/** @typedef {'file' | 'directory' | 'text'} Kind */
/** @typedef {{ kind: Kind, path: string, size: number }} Entry */

const KINDS = /** @type {const} */ (['file', 'directory', 'text']);

/**
 * @param {Entry[]} entries
 * @returns {Uint8Array}
 */
export function encodeManifest(entries) {
  const bytes = jsonBytes(entries.map(({ kind, path, size }) => [KINDS.indexOf(kind), path, size]));
  if (entries.length > Limit.entries || bytes.length > Limit.manifestBytes) {
    throw new TransferError('too-large');
  }
  return bytes;
}

/**
 * Throws where it is no manifest, or not one that anybody would send in good faith.
 * @param {Uint8Array} bytes
 * @returns {Entry[]}
 */
export function decodeManifest(bytes) {
  let listed;
  try {
    listed = JSON.parse(textOf(bytes));
  } catch {
    throw new TransferError('not-understood');
  }
  const isList = Array.isArray(listed) && listed.length > 0 && listed.length <= Limit.entries;
  if (!isList || !listed.every(isEntry)) throw new TransferError('not-understood');
  const entries = listed.map((/** @type {[0 | 1 | 2, string, number]} */ [kind, path, size]) => ({ kind: KINDS[kind], path, size }));
  if (!Number.isSafeInteger(totalSize(entries))) throw new TransferError('not-understood');
  return entries;
}

/** @param {Entry[]} entries */
export const totalSize = (entries) => entries.reduce((sum, { size }) => sum + size, 0);

/** @param {any} entry */
function isEntry(entry) {
  if (!Array.isArray(entry) || entry.length !== 3) return false;
  const [kind, path, size] = entry;
  const most = Number.isInteger(kind) ? [Number.MAX_SAFE_INTEGER, 0, Limit.textBytes][kind] : undefined;
  return most !== undefined && Number.isSafeInteger(size) && size >= 0 && size <= most && isPath(path);
}

/** @param {any} path */
function isPath(path) {
  if (typeof path !== 'string' || utf8(path).length > Limit.pathBytes || path.includes('\0')) return false;
  const pieces = path.split('/');
  return pieces.length <= Limit.depth && pieces.every((piece) =>
    piece !== '' && piece !== '.' && piece !== '..' && utf8(piece).length <= Limit.nameBytes);
}
