// What a person chose, and what that is to the other side.

import { describe } from '../engine/files.js';
import { mappedInSlices, Slices } from '../engine/slices.js';
import { utf8 } from '../protocol/bytes.js';
import { TransferError } from '../protocol/errors.js';
import { Limit } from '../protocol/limits.js';
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

/** An entry of an offer, and the item that it is of. @typedef {Outgoing & { item: Item }} Offered */

/**
 * The offer of some items: entries with their sizes as they are now, and under paths that can be
 * received. They are looked at from the beginning on, whether or not anybody takes them yet.
 */
export class Outgoings {
  /** So far. @type {Offered[]} */
  entries = [];
  /** What cannot be sent. @type {{ item: Item, code: string }[]} */
  failures = [];
  /** What has to be received under another name. @type {{ from: string, to: string }[]} */
  renamed = [];
  /** Resolves when all items were looked at. @type {Promise<void>} */
  whole;
  #paths = new ReceivablePaths();
  #folders = new Set();
  /** Resolves when there are more entries, or all. */
  #more = Promise.resolve();

  /**
   * Throws where there is too much.
   * @param {Item[]} items
   */
  constructor(items) {
    const texts = items.reduce((sum, { text }) => sum + (text ? utf8(text).length : 0), 0);
    if (items.length > Limit.entries || texts > Limit.textBytes) {
      throw new TransferError('too-large');
    }
    this.whole = this.#lookAt(items);
    this.whole.catch(() => {}); // whoever takes the entries hears of it
  }

  /**
   * The entries in their order, a part after the other.
   * @returns {AsyncGenerator<Offered[]>}
   */
  async *parts() {
    let isWhole = false;
    this.whole.finally(() => (isWhole = true)).catch(() => {});
    for (let at = 0; ;) {
      const part = this.entries.slice(at, at + AT_ONCE);
      at += part.length;
      if (part.length > 0) yield part;
      else if (isWhole) break;
      else await Promise.race([this.#more, this.whole]);
    }
    await this.whole;
  }

  /** @param {Item[]} items */
  async #lookAt(items) {
    let next = outgoingsOf(items, 0);
    for (let at = 0; at < items.length; at += AT_ONCE) {
      const found = next;
      // The host looks at the next ones meanwhile.
      next = outgoingsOf(items, at + AT_ONCE);
      next.catch(() => {}); // it is awaited in its turn
      this.#more = found.then((some) =>
        some.forEach((one, number) => this.#add(items[at + number], one)),
      );
      await this.#more;
    }
  }

  /**
   * @param {Item} item
   * @param {ReturnType<typeof outgoingOf>} one
   */
  #add(item, one) {
    const { kind } = one;
    const place = placeOf(item);
    const path = kind === 'text' ? item.name : this.#paths.take(place, kind ?? '');
    if (kind === null || path === null) {
      this.failures.push({ item, code: kind === null ? 'unreadable' : 'unreceivable' });
      return;
    }
    if (kind === 'directory' && this.#folders.has(path)) return;
    if (kind === 'directory') this.#folders.add(path);
    this.entries.push({ ...one, kind, path, item });
    if (path === place || kind === 'text') return;
    const to = path.slice(path.lastIndexOf('/') + 1);
    if (to !== item.name) this.renamed.push({ from: item.name, to });
  }
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
