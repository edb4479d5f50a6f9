// The sentences about a transfer, on its row and for screen readers.

import { hasEnded } from '../model/transfer_states.js';
import { isolated } from '../text/foreign_text.js';
import { countText, durationText, rateText, share, sizeText } from '../text/format.js';

/** @typedef {import('../model/types.js').Transfer} Transfer */

/**
 * The state, in a few words.
 * @param {Transfer} transfer
 * @returns {string}
 */
export function statusText({ state, direction, deviceName, message }) {
  const sends = direction === 'send';
  const device = isolated(deviceName);
  switch (state) {
    case 'connecting':
      return `Connecting to ${device}…`;
    case 'confirming':
      return `Is the same code shown on ${device}?`;
    case 'asking':
      if (sends) return `Waiting for ${device} to accept`;
      return `${device} wants to send you this${message ? `. ${message}` : ''}`;
    case 'active':
      return sends ? `Sending to ${device}` : `Receiving from ${device}`;
    case 'complete': {
      const done = sends ? `Sent to ${device}` : `Received from ${device}`;
      return message ? `${done}. ${message}` : done;
    }
    case 'failed':
      return message ?? `The transfer ${sends ? 'to' : 'from'} ${device} failed.`;
    case 'paused':
      return message ?? `The transfer ${sends ? 'to' : 'from'} ${device} is paused`;
    case 'cancelled':
      return (
        message ??
        (sends ? `Sending to ${device} was cancelled` : `Receiving from ${device} was cancelled`)
      );
    case 'declined':
      return sends ? `${device} declined` : `You declined this from ${device}`;
  }
}

/**
 * The number of files and bytes, and while it runs its progress and rate.
 * @param {Transfer} transfer
 */
export function factsText(transfer) {
  if (transfer.text !== null && transfer.locations.length === 0) return '';
  const { state, name, bytesTotal, bytesDone, rate, secondsLeft } = transfer;
  const facts = [];
  if (state === 'active') {
    facts.push(`${sizeText(bytesDone)} of ${sizeText(bytesTotal)}`);
    if (rate > 0) facts.push(rateText(rate));
    if (secondsLeft !== null) facts.push(`${durationText(secondsLeft)} left`);
    if (transfer.isStalled) facts.push('waiting for the other device');
  } else {
    const files = countText(transfer.fileCount, 'file');
    if (state === 'failed') {
      facts.push(
        `${transfer.direction === 'send' ? 'To' : 'From'} ${isolated(transfer.deviceName)}`,
      );
    }
    if (transfer.fileCount > 1 && files !== name) facts.push(files);
    if (bytesTotal > 0 || hasEnded(transfer)) facts.push(sizeText(bytesTotal));
  }
  if (transfer.note) facts.push(transfer.note);
  return facts.join(' · ');
}

/** Finds what to speak: each change of state and each quarter of the progress. */
export class TransferNews {
  /** @type {Map<string, { state: string, quarter: number }> | null} */
  #known = null;

  /**
   * @param {Transfer[]} transfers
   * @returns {string[]} nothing the first time: what was there before is no news
   */
  update(transfers) {
    const before = this.#known;
    this.#known = new Map(
      transfers.map((transfer) => [
        transfer.id,
        { state: transfer.state, quarter: Math.floor(share(transfer) * 4) },
      ]),
    );
    if (!before) return [];
    return transfers.flatMap((transfer) => {
      const now = this.#known?.get(transfer.id);
      const then = before.get(transfer.id);
      if (then?.state !== transfer.state)
        return [`${isolated(transfer.name)}: ${statusText(transfer)}`];
      const passed = transfer.state === 'active' && now && now.quarter > then.quarter;
      return passed ? [`${isolated(transfer.name)}: ${now.quarter * 25} percent`] : [];
    });
  }
}
