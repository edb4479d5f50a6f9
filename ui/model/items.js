// What a person chose, and what that is to the other side.

import { stat } from '../engine/files.js';
import { utf8 } from '../protocol/bytes.js';
import { TransferError } from '../protocol/errors.js';
import { Limit } from '../protocol/limits.js';

/** Files that are looked at at once. */
const AT_ONCE = 64;

/** @typedef {import('./types.js').Item} Item */
/** @typedef {import('../protocol/send.js').Outgoing} Outgoing */

/**
 * An item as a picker, a drop or a share describes it; what is missing is looked up when it is sent.
 * @param {import('../platform.js').SharedEntry} entry
 * @returns {Item}
 */
export const itemOf = (entry) => ({ ...entry, kind: entry.kind ?? 'file' });

/**
 * @param {string} text
 * @returns {Item}
 */
export const textItem = (text) =>
  ({ path: '', name: 'Text', size: utf8(text).length, kind: 'text', text });

/** @param {Item} item */
const placeOf = (item) => item.relativePath || item.name;

/**
 * What the other side sees at the top: the folders and files that were chosen, not what is in them.
 * @template {{ kind: string, name: string, relativePath?: string }} T
 * @param {T[]} items
 */
export const topLevel = (items) => items.filter(({ relativePath }) => !relativePath?.includes('/'));

/**
 * What is moved, for a person.
 * @param {{ kind: string, name: string, relativePath?: string }[]} items
 */
export function nameOf(items) {
  const top = topLevel(items);
  if (top.length === 1) return top[0].kind === 'text' ? 'Text' : top[0].name;
  return `${top.length || items.length} items`;
}

/**
 * The entries of an offer of these items, with their sizes as they are now.
 * @param {Item[]} items
 * @returns {Promise<Outgoing[]>}
 */
export async function outgoing(items) {
  if (items.length > Limit.entries) throw new TransferError('too-large');
  const entries = [];
  for (let at = 0; at < items.length; at += AT_ONCE) {
    entries.push(...await Promise.all(items.slice(at, at + AT_ONCE).map(outgoingOf)));
  }
  return entries;
}

/**
 * @param {Item} item
 * @returns {Promise<Outgoing>}
 */
async function outgoingOf(item) {
  const path = placeOf(item);
  if (item.kind === 'text') {
    const text = item.text ?? '';
    const size = utf8(text).length;
    if (size > Limit.textBytes) throw new TransferError('too-large');
    return { kind: 'text', path, size, source: '', text };
  }
  const found = await stat(item.path).catch(() => null);
  if (!found || found.kind === 'other') {
    throw new TransferError('unreadable', `“${item.name}” can no longer be read.`);
  }
  const isFile = found.kind === 'file';
  return { kind: found.kind, path, size: isFile ? found.size : 0, source: item.path };
}

/**
 * The items that are other than they say, as they are.
 * @param {Item[]} items
 * @returns {Promise<Map<Item, Item>>}
 */
export async function measured(items) {
  const measures = new Map();
  const unknown = items.filter(({ kind, size }) => kind === 'file' && size === 0);
  for (let at = 0; at < unknown.length; at += AT_ONCE) {
    await Promise.all(unknown.slice(at, at + AT_ONCE).map(async (item) => {
      const found = await stat(item.path).catch(() => null);
      if (found?.kind === 'file') measures.set(item, { ...item, size: found.size });
    }));
  }
  return measures;
}

const SHARE = /^.*\/\.NativeShareInbox\/[^/]+\//;

/** @param {string} path */
const shareOf = (path) => SHARE.exec(path)?.[0];

/** @param {string} path */
const foldersAbove = (path) =>
  [...path.matchAll(/\//g)].slice(1).map(({ index }) => path.slice(0, index));

/**
 * The paths of items that the host may let go of while it keeps those of others. It lets go of more
 * than it is told: of a folder along with a file in it, and of a whole share, whose files it
 * removes, along with one item.
 * @param {Item[]} items
 * @param {Item[]} needed
 */
export function releasablePaths(items, needed) {
  const kept = new Set(pathsOf(needed));
  const keptShares = new Set([...kept].map(shareOf).filter(Boolean));
  return pathsOf(items).filter((path) => !kept.has(path) && !keptShares.has(shareOf(path)) &&
    !foldersAbove(path).some((folder) => kept.has(folder)));
}

/**
 * The paths that the host keeps open for these items.
 * @param {Item[]} items
 */
export const pathsOf = (items) => items.map(({ path }) => path).filter((path) => path !== '');
