// What becomes of a transfer, as the window shows it.

import { fileEnd } from '../protocol/errors.js';
import { countText } from '../text/format.js';
import { isolated, plainName, shortened } from '../text/foreign_text.js';
import { NAME_CLUSTERS } from './items.js';

/** @typedef {import('./types.js').Transfer} Transfer */
/** @typedef {import('./types.js').FileFailure} FileFailure */
/** @typedef {import('../protocol/errors.js').TransferError} TransferError */

/** Files that are listed by name, and those that are named in the sentence. */
const LISTED = 100;
const NAMED = 3;

/**
 * How a transfer ends with an error.
 * @param {TransferError} reason
 * @returns {Partial<Transfer>}
 */
export function endedBy({ code, message }) {
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
  const failures = failed.slice(0, LISTED).map(({ name, code }) => ({
    name: shortened(plainName(name), NAME_CLUSTERS),
    reason: fileEnd({ code }),
  }));
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
  const named = failures.slice(0, NAMED).map(({ name, reason }) => `${isolated(name)} ${reason}`);
  const rest = all.length - named.length;
  const list = (rest > 0 ? [...named, `and ${rest} more`] : named).join(', ');
  if (fileCount <= 1) return `${list}.`;
  return `${all.length} of ${countText(fileCount, 'file')} did not arrive: ${list}.`;
}

/**
 * What the person should know of names that are changed.
 * @param {{ from: string, to: string }[]} renamed
 */
export function renamedText(renamed) {
  if (renamed.length === 0) return null;
  const [{ from, to }] = renamed;
  const shown = (/** @type {string} */ name) => isolated(shortened(plainName(name), NAME_CLUSTERS));
  const rest = renamed.length > 1 ? `, and ${renamed.length - 1} more likewise` : '';
  return `${shown(from)} is received as ${shown(to)}${rest}, because not every device takes its name.`;
}
