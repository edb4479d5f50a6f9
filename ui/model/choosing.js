// How a person chooses what is sent next: adds to the outbox and takes out of it.

import { platform } from '../platform.js';
import { isolated } from '../text/foreign_text.js';
import { words } from '../text/words.js';
import { contentFields } from './contents.js';

/** @typedef {import('./types.js').Item} Item */

/** Its actions reject with an Error whose message can be shown. */
export class Choosing {
  #outbox;
  #suggestions;

  /**
   * @param {import('./outbox.js').Outbox} outbox
   * @param {import('./suggestions.js').Suggestions} suggestions
   */
  constructor(outbox, suggestions) {
    this.#outbox = outbox;
    this.#suggestions = suggestions;
  }

  async pickFiles() {
    await this.add(await platform.pickFiles());
  }

  async pickFolder() {
    await this.add(await platform.pickFolder());
  }

  /** @param {import('../platform.js').SharedEntry[]} entries */
  async add(entries) {
    const repeated = await this.#outbox.add(entries);
    const top = repeated.filter(({ relativePath }) => !relativePath?.includes('/'));
    if (top.length === 0) return;
    const text = words('send.alreadyAdded', { names: await namesOf(top), count: top.length });
    this.#suggestions.offer({ text });
  }

  /** @param {string} text */
  addText(text) {
    return this.#outbox.addText(text);
  }

  /**
   * Removes an item, and with a folder all that is in it.
   * @param {Item} item
   */
  remove(item) {
    return this.#outbox.remove(item);
  }

  /** Removes all items, and offers to put them back. */
  async clear() {
    const { itemCount } = await contentFields(this.#outbox.items);
    const gone = await this.#outbox.clear();
    this.#suggestions.offer({
      text: words('send.cleared', { count: itemCount }),
      label: words('notices.undo'),
      run: () => this.#outbox.putBack(gone),
      settle: () => this.#outbox.release(gone),
    });
  }

  /**
   * A PNG of an item, or null.
   * @param {Item} item
   * @param {number} maximumDimension
   */
  async preview({ kind, path }, maximumDimension) {
    return kind === 'file' ? platform.receivedFilePreview(path, maximumDimension) : null;
  }
}

/** @param {Item[]} items */
const namesOf = async (items) =>
  (await contentFields(items)).contents.map(({ name }) => isolated(name));
