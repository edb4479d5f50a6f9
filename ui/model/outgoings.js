// What an offer consists of: the chosen items as they are now.

import { utf8 } from '../protocol/bytes.js';
import { TransferError } from '../protocol/errors.js';
import { Limit } from '../protocol/limits.js';
import { fileCount, totalSize } from '../protocol/manifest.js';
import { ReceivablePaths } from '../protocol/receivable_names.js';
import { AT_ONCE, described, placeOf } from './items.js';
import { renamedSentence } from './outcomes.js';

/** @typedef {import('./types.js').Item} Item */
/** An entry of an offer, and the item that it is of.
 *  @typedef {import('../protocol/send.js').Outgoing & { item: Item }} Offered */
/** @typedef {import('../engine/files.js').Description} Description */
/** The paths of an offer so far, and those of them that are folders.
 *  @typedef {{ paths: ReceivablePaths, folders: Set<string> }} Places */
/** Some entries, and those that follow. @typedef {{ part: Offered[], rest: Promise<Link | null> }} Link */

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
  #renamed = [];
  #first;

  /**
   * Throws where there is too much.
   * @param {Item[]} items
   */
  constructor(items) {
    const texts = items.reduce((sum, { text }) => sum + (text ? utf8(text).length : 0), 0);
    if (items.length > Limit.entries || texts > Limit.textBytes) {
      throw new TransferError('too-large');
    }
    const places = { paths: new ReceivablePaths(), folders: new Set() };
    this.#first = this.#link(items, 0, described(items, 0), places);
    this.#first.catch(() => {}); // rejects once more where the parts are taken
  }

  /**
   * The entries in their order, a part after the other.
   * @returns {AsyncGenerator<Offered[]>}
   */
  async *parts() {
    for (let link = await this.#first; link; link = await link.rest) {
      if (link.part.length > 0) yield link.part;
    }
  }

  /** Resolves when there is something to send. Rejects where nothing can be. */
  async anything() {
    const { done } = await this.parts().next();
    if (done) throw new TransferError(this.failures[0]?.code ?? 'unreadable');
  }

  /** The fields of a transfer that say how much it is, once all items were looked at. */
  get sum() {
    return {
      fileCount: fileCount(this.entries) + this.failures.length,
      bytesTotal: totalSize(this.entries),
      note: renamedSentence(this.#renamed),
    };
  }

  /**
   * @param {Item[]} items
   * @param {number} at the first one of this part
   * @param {ReturnType<typeof described>} looking at the items of this part
   * @param {Places} places
   * @returns {Promise<Link | null>} null at the end
   */
  async #link(items, at, looking, places) {
    if (at >= items.length) return null;
    const next = described(items, at + AT_ONCE); // the host works while the page does
    next.catch(() => {}); // rejects once more where the next part awaits it
    const found = await looking;
    const part = found.flatMap((one, number) => this.#entry(items[at + number], one, places));
    this.entries.push(...part);
    const rest = this.#link(items, at + AT_ONCE, next, places);
    rest.catch(() => {}); // rejects once more where the parts are taken
    return { part, rest };
  }

  /**
   * @param {Item} item
   * @param {Description | null} found null where it cannot be read
   * @param {Places} places
   * @returns {Offered[]} none for what cannot be sent, and for a folder that is there already
   */
  #entry(item, found, places) {
    if (item.kind === 'text') {
      const { name, text = '' } = item;
      const size = utf8(text).length;
      return [{ kind: 'text', path: name, size, modified: 0, source: '', text, item }];
    }
    const place = placeOf(item);
    const path = found && places.paths.take(place, found.kind);
    if (path === null) {
      this.failures.push({ item, code: found ? 'unreceivable' : 'unreadable' });
      return [];
    }
    const { kind, size, modified } = /** @type {Description} */ (found);
    const isFolder = kind === 'directory';
    if (isFolder && places.folders.has(path)) return [];
    if (isFolder) places.folders.add(path);
    const name = path.slice(path.lastIndexOf('/') + 1);
    if (path !== place && name !== item.name) this.#renamed.push({ from: item.name, to: name });
    const content = isFolder ? { size: 0, modified: 0 } : { size, modified: Math.max(0, modified) };
    return [{ kind, path, ...content, source: item.path, item }];
  }
}
