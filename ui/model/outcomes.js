// How transfers end, as fields of a transfer that the window shows.

import { fileEnd } from '../protocol/errors.js';
import { isolated, plainName, shortened } from '../text/foreign_text.js';
import { NAME_CLUSTERS } from './contents.js';

/** @typedef {import('./types.js').Transfer} Transfer */
/** @typedef {import('../text/words.js').Sentence} Sentence */
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
 * What a transfer keeps of the files that did not arrive.
 * @param {{ name: string, code: string }[]} failed
 * @param {number} fileCount of the whole transfer
 * @returns {Pick<Transfer, 'failures' | 'failureCount' | 'message'>}
 */
export function failureFields(failed, fileCount) {
  const failures = failed.slice(0, LISTED).map(({ name, code }) => ({
    name: shortened(plainName(name), NAME_CLUSTERS),
    reason: fileEnd({ name: shownName(name), code }),
  }));
  const message = failureSentence(
    failures.slice(0, NAMED).map(({ reason }) => reason),
    failed.length,
    fileCount,
  );
  return { failures, failureCount: failed.length, message };
}

/**
 * @param {Sentence[]} named the reasons of the first
 * @param {number} failed how many failed
 * @param {number} fileCount
 * @returns {Sentence | null}
 */
function failureSentence(named, failed, fileCount) {
  if (failed === 0) return null;
  const rest = failed - named.length;
  /** @type {Sentence[]} */
  const parts = rest > 0 ? [...named, { key: 'count.more', values: { count: rest } }] : named;
  const list = parts.reduce((before, next) => ({ key: 'failures.list', values: { before, next } }));
  return fileCount <= 1
    ? { key: 'failures.one', values: { list } }
    : { key: 'failures.some', values: { failed, count: fileCount, list } };
}

/**
 * What the person should know of names that are changed.
 * @param {{ from: string, to: string }[]} renamed
 * @returns {Sentence | null}
 */
export function renamedSentence(renamed) {
  if (renamed.length === 0) return null;
  const [from, to] = [shownName(renamed[0].from), shownName(renamed[0].to)];
  const count = renamed.length - 1;
  return count > 0
    ? { key: 'renamed.some', values: { from, to, count } }
    : { key: 'renamed.one', values: { from, to } };
}

/** @param {string} name */
const shownName = (name) => isolated(shortened(plainName(name), NAME_CLUSTERS));
