// Shows notifications of the desktop while the window does not have the focus.

import { platform } from '../platform.js';
import { isolated } from '../text/foreign_text.js';
import { sizeText } from '../text/format.js';
import { sentenceText, words } from '../text/words.js';
import { hasEnded } from './transfer_states.js';

/** @typedef {import('./types.js').Transfer} Transfer */

/**
 * @param {Transfer} transfer
 * @returns {{ title: string, body: string } | null}
 */
function notificationOf(transfer) {
  const { direction, state, message, code } = transfer;
  const device = isolated(transfer.deviceName);
  const name = isolated(transfer.name);
  const body = words(direction === 'send' ? 'status.to' : 'status.from', { device });
  if (state === 'confirming') {
    return {
      title: words('notify.compare', { device }),
      body: words('notify.code', { code: code ?? '' }),
    };
  }
  if (state === 'asking' && direction === 'receive') {
    return { title: words('notify.offer', { device, name }), body: offerText(transfer) };
  }
  if (state === 'complete') {
    return {
      title: words(direction === 'send' ? 'notify.sent' : 'notify.received', { name }),
      body,
    };
  }
  if (state === 'declined' && direction === 'send') {
    return { title: words('notify.declined', { device }), body: name };
  }
  return state === 'failed'
    ? { title: words('notify.failed', { name }), body: message ? sentenceText(message) : '' }
    : null;
}

/** The most names of an offer that a notification lists. */
const NAMED = 5;

/** How much is offered comes first: the desktop cuts what is long. @param {Transfer} transfer */
function offerText({ itemCount, bytesTotal, contents }) {
  const named = contents.slice(0, NAMED).map(({ name }) => isolated(name));
  const rest = itemCount - named.length;
  return words('notify.offerFacts', {
    items: words('count.items', { count: itemCount }),
    size: sizeText(bytesTotal),
    names: (rest > 0 ? [...named, words('count.more', { count: rest })] : named).join(', '),
  });
}

/** The one notification of all devices that are not known. */
const STRANGERS = 'strangers';

export class Notifications {
  /** Transfers of devices that are not known, since the person last looked. */
  #strangers = 0;
  /** @type {Map<string, string>} the state that was noticed, by transfer */
  #noticed;
  /** @type {Set<string>} the transfers with a notification */
  #shown = new Set();

  /** @param {Transfer[]} transfers those of earlier runs, which are not told again */
  constructor(transfers) {
    this.#noticed = new Map(transfers.map(({ id, state }) => [id, state]));
    // The window shows the same, so the notifications are not needed any more.
    window.addEventListener('focus', () => {
      this.#strangers = 0;
      this.#withdraw(() => true);
    });
  }

  /** @param {Transfer[]} transfers */
  update(transfers) {
    for (const transfer of transfers) {
      if (this.#noticed.get(transfer.id) === transfer.state) continue;
      this.#noticed.set(transfer.id, transfer.state);
      const notice = document.hasFocus() ? null : notificationOf(transfer);
      if (transfer.isStranger && transfer.state !== 'complete')
        this.#tellOfStranger(transfer, notice);
      else if (notice) this.#show(transfer.id, notice);
      else if (transfer.state === 'active' || hasEnded(transfer))
        this.#withdraw((id) => id === transfer.id);
    }
    const known = new Set(transfers.map(({ id }) => id));
    this.#withdraw((id) => id !== STRANGERS && !known.has(id));
  }

  /**
   * All requests of unknown devices share one notification, which counts them.
   * @param {Transfer} transfer
   * @param {{ title: string, body: string } | null} notice
   */
  #tellOfStranger({ state }, notice) {
    if (!notice || hasEnded({ state })) return;
    if (state === 'confirming') ++this.#strangers;
    if (this.#strangers <= 1) return this.#show(STRANGERS, notice);
    const title = words('notify.strangers', { count: this.#strangers });
    this.#show(STRANGERS, { title, body: words('notify.openWindow') });
  }

  /**
   * @param {string} id
   * @param {{ title: string, body: string }} notice
   */
  #show(id, notice) {
    this.#shown.add(id);
    // Where there is no notification service, only the window shows it.
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
