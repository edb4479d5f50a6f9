// What a person chose, and what that is to the other side.

import { describe } from '../engine/files.js';
import { mappedInSlices, Slices } from '../engine/slices.js';
import { utf8 } from '../protocol/bytes.js';
import { TransferError } from '../protocol/errors.js';
import { Limit } from '../protocol/limits.js';
import { totalSize } from '../protocol/manifest.js';
import { ReceivablePaths } from '../protocol/receivable_names.js';
import { isCount, isMissingOr, isOneOf, isText } from './schema.js';

/** Files that are looked at at once. */
const AT_ONCE = 1000;

/** @typedef {import('./types.js').Item} Item */
/** @typedef {import('../protocol/send.js').Outgoing} Outgoing */

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

/** @param {Item} item */
const placeOf = (item) => item.relativePath || item.name;

/** What is offered of some items. `items`: those that it is of. `failures`: what cannot be sent.
 *  `renamed`: what has to be received under another name.
 *  @typedef {object} Outgoings
 *  @property {(Outgoing & { item: Item })[]} entries
 *  @property {{ item: Item, code: string }[]} failures
 *  @property {{ from: string, to: string }[]} renamed */

/**
 * The entries of an offer of these items, with their sizes as they are now, and under paths that can
 * be received.
 * @param {Item[]} items
 * @returns {Promise<Outgoings>}
 */
export async function outgoing(items) {
  if (items.length > Limit.entries) throw new TransferError('too-large');
  /** @type {Outgoings} */
  const offer = { entries: [], failures: [], renamed: [] };
  const paths = new ReceivablePaths();
  const folders = new Set();
  let next = outgoingsOf(items, 0);
  for (let at = 0; at < items.length; at += AT_ONCE) {
    const found = await next;
    // The host looks at the next ones meanwhile.
    next = outgoingsOf(items, at + AT_ONCE);
    for (const [number, one] of found.entries()) {
      const item = items[at + number];
      const path = one.kind === 'text' ? item.name : paths.take(placeOf(item), one.kind ?? '');
      if (one.kind === null || path === null) {
        offer.failures.push({ item, code: one.kind === null ? 'unreadable' : 'unreceivable' });
      } else if (one.kind !== 'directory' || !folders.has(path)) {
        if (one.kind === 'directory') folders.add(path);
        const { kind } = one;
        offer.entries.push({ ...one, kind, path, item });
        if (path !== placeOf(item) && one.kind !== 'text') {
          const to = path.slice(path.lastIndexOf('/') + 1);
          if (to !== item.name) offer.renamed.push({ from: item.name, to });
        }
      }
    }
  }
  const texts = offer.entries.filter(({ kind }) => kind === 'text');
  if (totalSize(texts) > Limit.textBytes) throw new TransferError('too-large');
  return offer;
}

/**
 * What the next items are now.
 * @param {Item[]} items
 * @param {number} from
 */
async function outgoingsOf(items, from) {
  const some = items.slice(from, from + AT_ONCE);
  if (some.length === 0) return [];
  const found = await describe(some.map(({ path }) => path));
  return some.map((item, at) => outgoingOf(item, found[at]));
}

/**
 * What an item is now; of no kind where it cannot be read.
 * @param {Item} item
 * @param {import('../engine/files.js').Description | null} found
 */
function outgoingOf(item, found) {
  if (item.kind === 'text') {
    const text = item.text ?? '';
    return { kind: item.kind, size: utf8(text).length, modified: 0, source: '', text };
  }
  const source = item.path;
  if (!found) return { kind: null, size: 0, modified: 0, source };
  const { kind, size, modified } = found;
  return kind === 'file'
    ? { kind, size, modified: Math.max(0, modified), source }
    : { kind, size: 0, modified: 0, source };
}

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
 * The items that are other than they say, as they are.
 * @param {Item[]} items
 * @returns {Promise<Map<Item, Item>>}
 */
export async function measured(items) {
  const measures = new Map();
  const unknown = items.filter(({ kind, size }) => kind === 'file' && size === 0);
  for (let at = 0; at < unknown.length; at += AT_ONCE) {
    const some = unknown.slice(at, at + AT_ONCE);
    const found = await describe(some.map(({ path }) => path));
    for (const [next, item] of some.entries()) {
      const size = found[next]?.kind === 'file' ? found[next].size : 0;
      if (size > 0) measures.set(item, { ...item, size });
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
export function releasablePaths(items, needed) {
  const paths = pathsOf(items);
  if (needed.length === 0) return paths;
  const kept = new Set(needed.map(({ path }) => path));
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
export function pathsOf(items) {
  const folders = new Set();
  for (const { kind, path } of items) if (kind === 'directory') folders.add(path);
  return items
    .map(({ path }) => path)
    .filter((path) => path !== '' && !folders.has(path.slice(0, path.lastIndexOf('/'))));
}
