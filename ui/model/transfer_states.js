// The states of a transfer, and what they mean for the person.

/** @typedef {import('./types.js').Transfer} Transfer */
/** @typedef {import('./types.js').TransferState} TransferState */

/** @type {readonly TransferState[]} */
const ENDED = ['complete', 'failed', 'paused', 'cancelled', 'declined'];

/** @type {readonly TransferState[]} */
export const TRANSFER_STATES = ['connecting', 'confirming', 'asking', 'active', ...ENDED];

/** @param {Pick<Transfer, 'state'>} transfer */
export const hasEnded = ({ state }) => ENDED.includes(state);

/**
 * Whether it waits for this device's person.
 * @param {Pick<Transfer, 'state' | 'direction' | 'isConfirmed'>} transfer
 */
export const needsAnswer = ({ state, direction, isConfirmed }) =>
  (state === 'confirming' && !isConfirmed) || (state === 'asking' && direction === 'receive');

/**
 * Whether it was sent and can be sent again.
 * @param {Pick<Transfer, 'state' | 'direction'>} transfer
 */
export const canRetry = ({ state, direction }) =>
  direction === 'send' && hasEnded({ state }) && state !== 'complete';
