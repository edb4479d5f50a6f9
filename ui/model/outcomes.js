// What becomes of a transfer, as the window shows it.

import { fileEnd } from '../protocol/errors.js';
import { isolated, plainName, shortened } from '../text/foreign_text.js';
import { words } from '../text/words.js';
import { NAME_CLUSTERS } from './contents.js';

/** @typedef {import('./types.js').Transfer} Transfer */
/** @typedef {import('./types.js').FileFailure} FileFailure */
/** @typedef {import('../protocol/errors.js').TransferError} TransferError */

/** Files that are listed by name, and those that are named in the sentence. */
const LISTED = 100;
const NAMED = 3;

/**
 * How a transfer ends with an error.
 * @param {TransferError} reason
 * @param {Pick<Transfer, 'deviceName' | 'name'>} transfer
 * @returns {Partial<Transfer>}
 */
export function endedBy(reason, { deviceName, name }) {
  const { code } = reason;
  const message = reason.about(isolated(deviceName), isolated(name));
  const over = { code: null, rate: 0, secondsLeft: null, isStalled: false };
  if (code === 'cancelled' || code === 'cancelled-there') {
    return { ...over, state: 'cancelled', message: code === 'cancelled' ? null : message };
  }
  if (code === 'declined') return { ...over, state: 'declined', message: null };
  return { ...over, state: code.startsWith('paused') ? 'paused' : 'failed', message };
}

/**
 * @param {{ name: string, code: string }[]} failed
 * @param {number} fileCount of the whole transfer
 * @returns {Pick<Transfer, 'failures' | 'failureCount' | 'message'>}
 */
export function failureFields(failed, fileCount) {
  const failures = failed.slice(0, LISTED).map(({ name, code }) => {
    const shown = shortened(plainName(name), NAME_CLUSTERS);
    return { name: shown, reason: fileEnd({ name: isolated(shown), code }) };
  });
  return {
    failures,
    failureCount: failed.length,
    message: failureText(failures, failed, fileCount),
  };
}

/**
 * @param {FileFailure[]} failures
 * @param {unknown[]} all
 * @param {number} fileCount
 */
function failureText(failures, all, fileCount) {
  if (all.length === 0) return null;
  const named = failures.slice(0, NAMED).map(({ reason }) => reason);
  const rest = all.length - named.length;
  const list = rest > 0 ? `${named.join(', ')}, ${words('count.more', { count: rest })}` : named;
  return fileCount <= 1
    ? words('failures.one', { list })
    : words('failures.some', { failed: all.length, count: fileCount, list });
}

/**
 * What the person should know of names that are changed.
 * @param {{ from: string, to: string }[]} renamed
 */
export function renamedText(renamed) {
  if (renamed.length === 0) return null;
  const shown = (/** @type {string} */ name) => isolated(shortened(plainName(name), NAME_CLUSTERS));
  const [from, to] = [shown(renamed[0].from), shown(renamed[0].to)];
  const count = renamed.length - 1;
  return count > 0
    ? words('renamed.some', { from, to, count })
    : words('renamed.one', { from, to });
}
