// Why a transfer ended. Each has a code, which travels to the other side, and a sentence for the
// person on this one.

/** @type {Record<string, string>} */
const SENTENCES = {
  busy: 'The other device is busy. Try again later.',
  cancelled: 'Cancelled.',
  'cancelled-there': 'Cancelled on the other device.',
  'changed-key':
    'The other device no longer recognises this one. Agree to its new key there, then try again.',
  'changed-file': 'All files changed while they were being sent.',
  'code-differs': 'The codes did not match. Somebody else may be listening on this network.',
  declined: 'The other device declined.',
  'disk-full': 'There is not enough space on the disk.',
  'disk-full-there': 'There is not enough space on the other device’s disk.',
  'failed-there': 'The other device could not go on.',
  hidden: 'The other device is not receiving at the moment.',
  lost: 'The connection was lost.',
  'new-key': 'This device’s key has changed. It may not be the device that it was.',
  'no-answer': 'The other device did not answer.',
  'not-saved': 'The files could not be saved.',
  'not-understood': 'The other device sent something that makes no sense.',
  paused: 'Paused.',
  'paused-there': 'Paused on the other device.',
  'other-key': 'Another device answered in place of the one that was chosen.',
  'too-large': 'That is more than can be sent at once.',
  unreachable: 'The other device cannot be reached.',
  unreadable: 'Nothing of it can be read any more.',
  unreceivable: 'Its name cannot be received.',
  version:
    'The other device has another version of this program, which this one does not understand.',
};

/** What each code means to the side that it is sent to. */
const MEANS_THERE = /** @type {Record<string, string>} */ ({
  cancelled: 'cancelled-there',
  paused: 'paused-there',
  'disk-full': 'disk-full-there',
  'new-key': 'changed-key',
  'not-saved': 'failed-there',
  unreadable: 'failed-there',
  'changed-file': 'failed-there',
});

/** What became of one file, to go after its name. @type {Record<string, string>} */
const FILE_ENDS = {
  'changed-file': 'changed while it was being sent',
  unreadable: 'could not be read',
  unreceivable: 'has a path that cannot be received',
};

/**
 * Why one file did not arrive, to go after its name.
 * @param {{ code: string }} failure
 */
export const fileEnd = ({ code }) => FILE_ENDS[code] ?? 'could not be saved';

export class TransferError extends Error {
  /**
   * @param {string} code
   * @param {string} [sentence] instead of the code's own
   */
  constructor(code, sentence) {
    super(sentence ?? SENTENCES[code] ?? SENTENCES['failed-there']);
    this.name = 'TransferError';
    this.code = code;
  }

  /**
   * The error that the other side told.
   * @param {unknown} code
   */
  static told(code) {
    const text = typeof code === 'string' ? code : '';
    return new TransferError(MEANS_THERE[text] ?? (text in SENTENCES ? text : 'failed-there'));
  }

  /**
   * The error to end a transfer with, of whatever went wrong.
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
    return new TransferError(fallback, `${SENTENCES[fallback]} ${reason}`);
  }
}
