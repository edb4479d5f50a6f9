// The sentences about a transfer, on its row and for screen readers.

import { hasEnded } from '../model/transfer_states.js';
import { canBeOpened } from './contents_part.js';
import { isolated } from '../text/foreign_text.js';
import { durationText, percentText, rateText, share, sizeText } from '../text/format.js';
import { sentenceText, words } from '../text/words.js';

/** @typedef {import('../model/types.js').Transfer} Transfer */
/** @typedef {import('../text/words.js').Key} Key */

/**
 * The state, in a few words.
 * @param {Transfer} transfer
 * @returns {string}
 */
export function statusText({ state, direction, deviceName, message: said, isConfirmed }) {
  const message = said && sentenceText(said);
  const sends = direction === 'send';
  const device = isolated(deviceName);
  const plain = (/** @type {Key} */ sending, /** @type {Key} */ receiving) =>
    words(sends ? sending : receiving, { device });
  const more = (/** @type {string} */ status) =>
    message ? words('status.with', { status, message }) : status;
  switch (state) {
    case 'connecting':
      return words('status.connecting', { device });
    case 'confirming':
      return words(isConfirmed ? 'status.confirmed' : 'status.compare', { device });
    case 'asking':
      return sends ? words('status.waiting', { device }) : more(words('status.offers', { device }));
    case 'active':
      return plain('status.sending', 'status.receiving');
    case 'complete':
      return more(plain('status.sent', 'status.received'));
    case 'failed':
      return message ?? plain('status.sendFailed', 'status.receiveFailed');
    case 'paused':
      return message ?? plain('status.sendPaused', 'status.receivePaused');
    case 'cancelled':
      return message ?? plain('status.sendCancelled', 'status.receiveCancelled');
    case 'declined':
      return plain('status.theyDeclined', 'status.youDeclined');
  }
}

/**
 * The number of items and bytes, and while it runs its progress and rate.
 * @param {Transfer} transfer
 */
export function factsText(transfer) {
  if (transfer.text !== null && transfer.locations.length === 0) return '';
  const { state, bytesTotal, bytesDone, rate, secondsLeft, fileCount } = transfer;
  const facts = [];
  if (state === 'active') {
    const [done, total] = [sizeText(bytesDone), sizeText(bytesTotal)];
    facts.push(words('status.progress', { done, total }));
    if (rate > 0) facts.push(rateText(rate));
    if (secondsLeft !== null) facts.push(words('status.left', { time: durationText(secondsLeft) }));
    if (transfer.isStalled) facts.push(words('status.stalled'));
  } else {
    if (state === 'failed' || state === 'declined') {
      const device = isolated(transfer.deviceName);
      facts.push(words(transfer.direction === 'send' ? 'status.to' : 'status.from', { device }));
    }
    if (!canBeOpened(transfer) && fileCount > 1)
      facts.push(words('count.files', { count: fileCount }));
    if (bytesTotal > 0 || hasEnded(transfer)) facts.push(sizeText(bytesTotal));
  }
  if (transfer.note) facts.push(sentenceText(transfer.note));
  return facts.join(' · ');
}

/** @param {Transfer} transfer how many quarters of it are done */
const quartersOf = (transfer) => Math.floor(share(transfer) * 4);

/** Finds what a screen reader announces: each change of state and each quarter of the progress. */
export class TransferNews {
  /** @type {Map<string, Transfer> | null} */
  #known = null;

  /**
   * @param {Transfer[]} transfers replaced where they change, never mutated
   * @returns {string[]} nothing the first time: what was there before is no news
   */
  update(transfers) {
    const before = this.#known;
    this.#known = new Map(transfers.map((transfer) => [transfer.id, transfer]));
    if (!before) return [];
    return transfers.flatMap((now) => {
      const then = before.get(now.id);
      return now === then ? [] : newsOf(now, then);
    });
  }
}

/**
 * @param {Transfer} now
 * @param {Transfer | undefined} then undefined for a new one
 */
function newsOf(now, then) {
  const name = isolated(now.name);
  if (then?.state !== now.state) return [words('status.row', { name, status: statusText(now) })];
  const hasPassed = now.state === 'active' && quartersOf(now) > quartersOf(then);
  return hasPassed
    ? [words('news.progress', { name, share: percentText(quartersOf(now) / 4) })]
    : [];
}
