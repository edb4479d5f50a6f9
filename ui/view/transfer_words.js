// What is said of a transfer: on its row, and aloud.

import { countText, durationText, rateText, share, sizeText } from './format.js';

/** @typedef {import('../model/types.js').Transfer} Transfer */

const FINISHED = ['complete', 'failed', 'cancelled', 'declined'];

/** @param {Pick<Transfer, 'state'>} transfer */
export const isFinished = ({ state }) => FINISHED.includes(state);

/**
 * Whether it waits for this device's person.
 * @param {Transfer} transfer
 */
export const needsAnswer = ({ state, direction }) =>
  state === 'confirming' || (state === 'asking' && direction === 'receive');

/**
 * Where it stands, in a few words.
 * @param {Transfer} transfer
 * @returns {string}
 */
export function statusText({ state, direction, deviceName, message }) {
  const sends = direction === 'send';
  switch (state) {
    case 'connecting':
      return `Connecting to ${deviceName}…`;
    case 'confirming':
      return `Is the same code shown on ${deviceName}?`;
    case 'asking':
      return sends ? `Waiting for ${deviceName} to accept` : `${deviceName} wants to send you this`;
    case 'active':
      return sends ? `Sending to ${deviceName}` : `Receiving from ${deviceName}`;
    case 'complete':
      return sends ? `Sent to ${deviceName}` : `Received from ${deviceName}`;
    case 'failed':
      return message ?? `The transfer ${sends ? 'to' : 'from'} ${deviceName} failed.`;
    case 'cancelled':
      return (
        message ??
        (sends
          ? `Sending to ${deviceName} was cancelled`
          : `Receiving from ${deviceName} was cancelled`)
      );
    case 'declined':
      return sends ? `${deviceName} declined` : `You declined this from ${deviceName}`;
  }
}

/**
 * How many files and bytes it has, and while it runs how far and how fast it is.
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
  } else {
    const files = countText(transfer.fileCount, 'file');
    if (state === 'failed') {
      facts.push(`${transfer.direction === 'send' ? 'To' : 'From'} ${transfer.deviceName}`);
    }
    if (transfer.fileCount > 1 && files !== name) facts.push(files);
    if (bytesTotal > 0 || isFinished(transfer)) facts.push(sizeText(bytesTotal));
  }
  return facts.join(' · ');
}

/** Finds what is worth saying aloud: each change of state, and each quarter of the way. */
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
      if (then?.state !== transfer.state) return [`${transfer.name}: ${statusText(transfer)}`];
      const passed = transfer.state === 'active' && now && now.quarter > then.quarter;
      return passed ? [`${transfer.name}: ${now.quarter * 25} percent`] : [];
    });
  }
}
