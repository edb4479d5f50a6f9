// What transfers send, each list in a document of its own: it may be long, and does not change while the
// transfer does.

import { ITEM_FIELDS } from './items.js';
import { fittingEntries } from './schema.js';

/** @typedef {import('./types.js').Item} Item */
/** @typedef {{ id: string, items: Item[] }} Sending */

const PREFIX = 'items-';
/** The document that most of them are in before they are sent. */
const OUTBOX = 'outbox';

/** @param {string} id of a transfer */
const documentOf = (id) => PREFIX + id;

export class SentItems {
  #documents;
  /** By transfer. @type {Map<string, Item[]>} */
  #saved = new Map();

  /** @param {import('./documents.js').Documents} documents */
  constructor(documents) {
    this.#documents = documents;
  }

  /**
   * @param {string} id of a transfer
   * @returns {Promise<Item[]>}
   */
  async load(id) {
    const name = documentOf(id);
    const items = await this.#documents.load(name, (content) =>
      fittingEntries(name, content, ITEM_FIELDS),
    );
    if (items) this.#saved.set(id, items);
    return items ?? [];
  }

  /**
   * Saves what these transfers send, and removes what others sent.
   * @param {Sending[]} transfers
   */
  save(transfers) {
    const needed = new Map(
      transfers.filter(({ items }) => items.length > 0).map(({ id, items }) => [id, items]),
    );
    for (const [id, items] of needed) {
      if (this.#saved.get(id) !== items)
        this.#documents.saveTaking(documentOf(id), items, OUTBOX).catch(() => {});
    }
    for (const id of this.#saved.keys()) {
      if (!needed.has(id)) this.#documents.remove(documentOf(id)).catch(() => {});
    }
    this.#saved = needed;
  }

  /**
   * Whether a document is of no transfer any more.
   * @param {string} name
   */
  isUnneeded(name) {
    return name.startsWith(PREFIX) && !this.#saved.has(name.slice(PREFIX.length));
  }
}
