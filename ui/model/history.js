// What a person does with transfers that are over: opens what was received, and clears the list.

import { platform } from '../platform.js';
import { discardScratch } from '../protocol/scratch_area.js';
import { isolated, plainName } from '../text/foreign_text.js';
import { words } from '../text/words.js';
import { copyReceivedText, locationIn } from './received.js';
import { hasEnded } from './transfer_states.js';

/** @typedef {import('./types.js').Transfer} Transfer */

/** Its actions reject with an Error whose message can be shown. */
export class History {
  #transfers;
  #outbox;
  #suggestions;

  /**
   * @param {import('./transfers.js').Transfers} transfers
   * @param {import('./outbox.js').Outbox} outbox
   * @param {import('./suggestions.js').Suggestions} suggestions
   */
  constructor(transfers, outbox, suggestions) {
    this.#transfers = transfers;
    this.#outbox = outbox;
    this.#suggestions = suggestions;
  }

  /** @param {string} transferId */
  async remove(transferId) {
    const transfer = this.#transfers.find(transferId);
    this.#transfers.remove(({ id }) => id === transferId);
    await this.#letGoOf([transfer]);
  }

  /** Removes all transfers that are over, and offers to put them back. */
  async clear() {
    const ended = this.#transfers.list.filter(hasEnded);
    this.#transfers.remove(() => true);
    this.#suggestions.offer({
      text: words('transfers.cleared', { count: ended.length }),
      label: words('notices.undo'),
      run: () => this.#transfers.restore(ended),
      settle: () => this.#letGoOf(ended),
    });
  }

  /**
   * @param {string} transferId
   * @param {string} [location] the first where none is given
   */
  async open(transferId, location) {
    const place = this.#locationOf(transferId, location);
    try {
      await platform.openReceivedFile(place);
    } catch (error) {
      if (!(await platform.receivedFileExists(place))) throw new Error(words('received.moved'));
      const file = isolated(plainName(place.slice(place.lastIndexOf('/') + 1)));
      throw new Error(words('received.noApplication', { file }), { cause: error });
    }
  }

  /**
   * @param {string} transferId
   * @param {string} [location] the first where none is given
   */
  async reveal(transferId, location) {
    await platform.revealReceivedFile(this.#locationOf(transferId, location));
  }

  /** @param {string} transferId */
  async copyText(transferId) {
    await copyReceivedText(this.#transfers.find(transferId));
  }

  /**
   * A PNG of the first thing that was received, or null.
   * @param {string} transferId
   * @param {number} maximumDimension
   */
  async preview(transferId, maximumDimension) {
    return platform.receivedFilePreview(this.#locationOf(transferId), maximumDimension);
  }

  /**
   * What only these transfers needed.
   * @param {Transfer[]} transfers
   */
  async #letGoOf(transfers) {
    await this.#outbox.release(transfers.flatMap(({ items }) => items));
    for (const { scratch } of transfers) if (scratch) await discardScratch(scratch).catch(() => {});
  }

  /**
   * @param {string} transferId
   * @param {string} [location]
   */
  #locationOf(transferId, location) {
    return locationIn(this.#transfers.find(transferId), location);
  }
}
