// Tells the person through the desktop what happens while they look elsewhere.

import { platform } from '../platform.js';
import { isEnded } from './transfers.js';

/** @typedef {import('./types.js').Transfer} Transfer */

/**
 * @param {Transfer} transfer
 * @returns {{ title: string, body: string } | null}
 */
function noticeOf({ direction, state, deviceName, name, offered, message, code }) {
  if (state === 'confirming') {
    return { title: `Compare the code with ${deviceName}`, body: `The code is ${code}.` };
  }
  if (direction === 'receive') {
    if (state === 'asking') return { title: `${deviceName} wants to send you ${name}`, body: offered.join(', ') };
    if (state === 'complete') return { title: `Received ${name}`, body: `From ${deviceName}` };
  }
  if (direction === 'send' && state === 'complete') {
    return { title: `Sent ${name}`, body: `To ${deviceName}` };
  }
  if (direction === 'send' && state === 'declined') {
    return { title: `${deviceName} declined`, body: name };
  }
  return state === 'failed' ? { title: `${name} failed`, body: message ?? '' } : null;
}

export class Notices {
  /** @type {Map<string, string>} the state that was noticed, by transfer */
  #noticed;
  /** @type {Set<string>} the transfers with a notification */
  #shown = new Set();

  /** @param {Transfer[]} transfers those that are no news */
  constructor(transfers) {
    this.#noticed = new Map(transfers.map(({ id, state }) => [id, state]));
    // Whoever looks at the window knows.
    window.addEventListener('focus', () => this.#withdraw(() => true));
  }

  /** @param {Transfer[]} transfers */
  update(transfers) {
    for (const transfer of transfers) {
      if (this.#noticed.get(transfer.id) === transfer.state) continue;
      this.#noticed.set(transfer.id, transfer.state);
      const notice = document.hasFocus() ? null : noticeOf(transfer);
      if (notice) this.#show(transfer.id, notice);
      else if (transfer.state === 'active' || isEnded(transfer)) this.#withdraw((id) => id === transfer.id);
    }
    const known = new Set(transfers.map(({ id }) => id));
    this.#withdraw((id) => !known.has(id));
  }

  /**
   * @param {string} id
   * @param {{ title: string, body: string }} notice
   */
  #show(id, notice) {
    this.#shown.add(id);
    // Without a notification service, the window says it all the same.
    platform.showNotification({ id: `transfer-${id}`, ...notice }).catch(() => {});
  }

  /** @param {(id: string) => boolean} isUnwanted */
  #withdraw(isUnwanted) {
    for (const id of [...this.#shown].filter(isUnwanted)) {
      this.#shown.delete(id);
      platform.clearNotification(`transfer-${id}`).catch(() => {});
    }
  }
}
