// Why a transfer ended. Each has a code, which travels to the other side, and a sentence for the
// person on this one.

import { isKey, sentenceText, words } from '../text/words.js';

/** @typedef {import('../text/words.js').Sentence} Sentence */

/** The code that each code becomes on the side that receives it. */
const MEANS_THERE = /** @type {Record<string, string>} */ ({
  cancelled: 'cancelled-there',
  paused: 'paused-there',
  'disk-full': 'disk-full-there',
  'new-key': 'changed-key',
  'not-saved': 'failed-there',
  unreadable: 'failed-there',
  'changed-file': 'failed-there',
});

/** @param {string} code */
const keyOf = (code) => {
  const key = `end.${code}`;
  return isKey(key) ? key : 'end.failed-there';
};

/**
 * Why one file did not arrive.
 * @param {{ name: string, code: string }} failure
 * @returns {Sentence}
 */
export function fileEnd({ name, code }) {
  const key = `fileEnd.${code}`;
  return { key: isKey(key) ? key : 'fileEnd.not-saved', values: { name } };
}

export class TransferError extends Error {
  /**
   * @param {string} code
   * @param {string} [reason] what is known besides
   */
  constructor(code, reason = '') {
    super(code);
    this.name = 'TransferError';
    this.code = code;
    this.reason = reason;
    this.message = sentenceText(this.about(words('end.theOther'), words('item.text')));
  }

  /**
   * The sentence, with the names that the person knows.
   * @param {string} device the other one
   * @param {string} file what was to be sent
   * @returns {Sentence}
   */
  about(device, file) {
    /** @type {Sentence} */
    const sentence = { key: keyOf(this.code), values: { device, file } };
    if (!this.reason) return sentence;
    return { key: 'end.because', values: { sentence, reason: this.reason } };
  }

  /**
   * The error for a code that the other side sent.
   * @param {unknown} code
   */
  static told(code) {
    const text = typeof code === 'string' ? code : '';
    return new TransferError(MEANS_THERE[text] ?? (isKey(`end.${text}`) ? text : 'failed-there'));
  }

  /**
   * The error with which a transfer ends after any failure.
   * @param {any} error
   * @param {string} fallback the code where nothing more is known
   */
  static of(error, fallback) {
    if (error instanceof TransferError) return error;
    if (error?.details === 'ENOSPC' || error?.details === 'EDQUOT')
      return new TransferError('disk-full');
    if (error?.details === 'EBADMSG' || error?.details === 'EPROTO')
      return new TransferError('not-understood');
    if (error?.code === 'socket_error') return new TransferError('lost');
    const reason = error instanceof Error ? error.message : String(error);
    return new TransferError(fallback, reason);
  }
}
