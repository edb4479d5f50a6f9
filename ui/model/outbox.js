// What is to be sent next. It is on the disk before it is shown, so that what the window has survives.

import { mappedInSlices } from '../engine/slices.js';
import { platform } from '../platform.js';
import { words } from '../text/words.js';
import {
  ITEM_FIELDS,
  itemOf,
  itemsWith,
  measured,
  pathsOf,
  releasablePaths,
  textItem,
  withoutRepeats,
} from './items.js';
import { fittingEntries } from './schema.js';

/** @typedef {import('./types.js').Item} Item */

const DOCUMENT = 'outbox';

/** Dispatches “change” once the document has the items; `items` is replaced, never changed. */
export class Outbox extends EventTarget {
  #documents;
  /** @type {Item[]} the items with the changes that are being saved */
  #latest;
  #neededElsewhere;
  /** @type {Item[]} */
  items;

  /**
   * @param {import('./documents.js').Documents} documents
   * @param {Item[]} items
   * @param {() => Item[]} neededElsewhere the items that transfers still need
   */
  constructor(documents, items, neededElsewhere) {
    super();
    this.#documents = documents;
    this.#latest = this.items = items;
    this.#neededElsewhere = neededElsewhere;
  }

  /**
   * @param {import('./documents.js').Documents} documents
   * @returns {Promise<Item[]>}
   */
  static async load(documents) {
    const stored = await documents.load(DOCUMENT, (content) =>
      fittingEntries(DOCUMENT, content, ITEM_FIELDS),
    );
    return stored ?? [];
  }

  /**
   * @param {import('../platform.js').SharedEntry[]} entries
   * @returns {Promise<Item[]>} those that it had
   */
  async add(entries) {
    const { added, repeated, saved } = await this.#append(await mappedInSlices(entries, itemOf));
    await saved;
    // Pickers and drops do not say how large files are.
    const measures = await measured(added);
    if (measures.size > 0) await this.#replace(this.#latest.map((one) => measures.get(one) ?? one));
    return repeated;
  }

  /**
   * Appends what is not there yet.
   * @param {Item[]} items
   * @returns {Promise<{ added: Item[], repeated: Item[], saved: Promise<void> }>}
   */
  async #append(items) {
    for (;;) {
      const before = this.#latest;
      const { added, repeated } = await withoutRepeats(items, before);
      if (this.#latest !== before) continue;
      const saved = added.length > 0 ? this.#replace([...before, ...added]) : Promise.resolve();
      return { added, repeated, saved };
    }
  }

  /** @param {string} text */
  addText(text) {
    return this.putBack([textItem(text)]);
  }

  /** @param {Item[]} items */
  async putBack(items) {
    await (
      await this.#append(items)
    ).saved;
  }

  /**
   * Removes an item, and with a folder all that is in it.
   * @param {Item} item
   */
  async remove(item) {
    const gone = new Set(itemsWith(item, this.#latest));
    await this.#replace(this.#latest.filter((one) => !gone.has(one)));
    await this.release([...gone]);
  }

  /**
   * Empties it; the host keeps the files until they are released.
   * @returns {Promise<Item[]>}
   */
  async clear() {
    const gone = this.#latest;
    await this.#replace([]);
    return gone;
  }

  /** Takes what is shown out, to be sent: what is still being added stays. */
  takeAll() {
    const taken = this.items === this.#latest ? null : new Set(this.items);
    const left = taken ? this.#latest.filter((one) => !taken.has(one)) : [];
    this.#replace(left).catch(() => {});
  }

  /**
   * Lets go of the files that nothing that is still to be sent needs.
   * @param {Item[]} items
   */
  async release(items) {
    let needed, paths;
    do {
      needed = this.#needed;
      paths = await releasablePaths(items, needed);
    } while (!areSame(needed, this.#needed)); // what is added meanwhile may need them
    if (paths.length > 0) await platform.releasePickedFiles(paths).catch(() => {});
  }

  get #needed() {
    return [...this.#latest, ...this.#neededElsewhere()];
  }

  /** Has the host open the files of earlier runs again. */
  async restore() {
    const paths = await pathsOf([...this.items, ...this.#neededElsewhere()]);
    if (paths.length > 0) await platform.restorePickedFiles(paths).catch(() => {});
  }

  /**
   * Shows the items even where they could not be saved, and then rejects.
   * @param {Item[]} items
   */
  async #replace(items) {
    this.#latest = items;
    try {
      await this.#documents.save(DOCUMENT, items);
    } catch (error) {
      const why = error instanceof Error ? error.message : error;
      throw new Error(words('send.notSaved', { why: String(why) }), { cause: error });
    } finally {
      this.items = items;
      this.dispatchEvent(new Event('change'));
    }
  }
}

/**
 * @param {Item[]} some
 * @param {Item[]} others
 */
const areSame = (some, others) =>
  some.length === others.length && some.every((one, at) => one === others[at]);
