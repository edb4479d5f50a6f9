// What a person chose to send.

import { describe } from '../engine/files.js';
import { mappedInSlices, Slices } from '../engine/slices.js';
import { utf8 } from '../protocol/bytes.js';
import { isCount, isMissingOr, isOneOf, isText } from './schema.js';

/** Items that are looked at at once. */
export const AT_ONCE = 1000;

/** @typedef {import('./types.js').Item} Item */

/** How documents hold an item. */
export const ITEM_FIELDS = {
  path: isText,
  name: isText,
  size: isCount,
  kind: isOneOf(['file', 'directory', 'text']),
  relativePath: isMissingOr(isText),
  text: isMissingOr(isText),
};

/**
 * An item as a picker, a drop or a share describes it; what is missing is looked up when it is sent.
 * @param {import('../platform.js').SharedEntry} entry
 * @returns {Item}
 */
export const itemOf = (entry) => ({ ...entry, kind: entry.kind ?? 'file' });

/** What texts are called among files, on every device. */
const TEXT_NAME = 'Text';

/**
 * @param {string} text
 * @returns {Item}
 */
export const textItem = (text) => ({
  path: '',
  name: TEXT_NAME,
  size: utf8(text).length,
  kind: 'text',
  text,
});

/**
 * Where it goes, from the receive folder.
 * @param {Item} item
 */
export const placeOf = (item) => item.relativePath || item.name;

/**
 * What makes an item another one: where it is, where it goes, and what it says.
 * @param {Item} item
 */
const identityOf = (item) => `${item.path}\0${placeOf(item)}\0${item.text ?? ''}`;

/**
 * The items that are not among others yet, each once.
 * @param {Item[]} items
 * @param {Item[]} others
 * @returns {Promise<{ added: Item[], repeated: Item[] }>}
 */
export async function withoutRepeats(items, others) {
  const known = new Set(await mappedInSlices(others, identityOf));
  /** @type {Item[]} */
  const added = [];
  /** @type {Item[]} */
  const repeated = [];
  const slices = new Slices();
  for (const item of items) {
    const identity = identityOf(item);
    (known.has(identity) ? repeated : added).push(item);
    known.add(identity);
    if (slices.isOver) await slices.next();
  }
  return { added, repeated };
}

/**
 * An item, and where it is a folder all items in it.
 * @param {Item} item
 * @param {Item[]} among
 */
export function itemsWith(item, among) {
  const identity = identityOf(item);
  const below = `${placeOf(item)}/`;
  return among.filter(
    (one) =>
      identityOf(one) === identity ||
      (item.kind === 'directory' &&
        one.path.startsWith(`${item.path}/`) &&
        placeOf(one).startsWith(below)),
  );
}

/**
 * What the items from a number on are now, at most as many as are looked at at once; null for each
 * that cannot be read.
 * @param {Item[]} items
 * @param {number} from
 */
export async function described(items, from) {
  const some = items.slice(from, from + AT_ONCE);
  return some.length > 0 ? describe(some.map(({ path }) => path)) : [];
}

/**
 * The items that are other than they say, as they are.
 * @param {Item[]} items
 * @returns {Promise<Map<Item, Item>>}
 */
export async function measured(items) {
  const measures = new Map();
  // What is in a folder came with its size.
  const unknown = items.filter(
    ({ kind, size, relativePath }) => kind === 'file' && size === 0 && relativePath === undefined,
  );
  for (let at = 0; at < unknown.length; at += AT_ONCE) {
    for (const [next, found] of (await described(unknown, at)).entries()) {
      const item = unknown[at + next];
      if (found?.kind === 'file' && found.size > 0)
        measures.set(item, { ...item, size: found.size });
    }
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
export async function releasablePaths(items, needed) {
  const paths = await pathsOf(items);
  if (needed.length === 0) return paths;
  const kept = new Set(await mappedInSlices(needed, ({ path }) => path));
  const keptShares = new Set([...kept].map(shareOf).filter(Boolean));
  return paths.filter(
    (path) =>
      !kept.has(path) &&
      !keptShares.has(shareOf(path)) &&
      !foldersAbove(path).some((folder) => kept.has(folder)),
  );
}

/**
 * The paths that the host keeps open for these items: of a folder, what is in it has none of its own.
 * @param {Item[]} items
 */
export async function pathsOf(items) {
  const folders = new Set(items.filter(({ kind }) => kind === 'directory').map(({ path }) => path));
  const slices = new Slices();
  const paths = [];
  for (const { path } of items) {
    if (path !== '' && !folders.has(path.slice(0, path.lastIndexOf('/')))) paths.push(path);
    if (slices.isOver) await slices.next();
  }
  return paths;
}
