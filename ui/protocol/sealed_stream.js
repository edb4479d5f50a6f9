// Records between two devices after the handshake; docs/protocol.md has their layout. A record that
// was changed, replayed, left out, reordered, turned back or moved from another connection does not
// open.

import { TransferError } from './errors.js';
import { Limit } from './limits.js';
import { RecordCipher } from './record_cipher.js';

/** Type and three zero bytes; the frame's size stands before them. */
const TYPE = 4;
const TAG = 16;
const NOTHING = new Uint8Array(0);

/** @typedef {{ send: Uint8Array, receive: Uint8Array }} RecordKeys */

export class SealedStream {
  #stream;
  #outgoing;
  #incoming;
  /** @type {Promise<unknown>} */
  #lastWrite = Promise.resolve();
  /** The largest frame that is read. */
  largest = Limit.strangersFrame;

  /**
   * @param {import('./frames.js').FrameStream} stream
   * @param {RecordKeys} keys of this connection alone
   */
  constructor(stream, keys) {
    this.#stream = stream;
    this.#outgoing = new RecordCipher(keys.send);
    this.#incoming = new RecordCipher(keys.receive);
  }

  /**
   * Sends a record; resolves when the system has taken it. Records leave in the order of the calls,
   * while several are sealed at once.
   * @param {number} type
   * @param {Uint8Array} [body]
   */
  send(type, body = NOTHING) {
    const head = new Uint8Array([type, 0, 0, 0]);
    const sealed = this.#outgoing.seal(headerOf(head, TYPE + body.length + TAG), body);
    const before = this.#lastWrite;
    const write = (async () => {
      const bytes = await sealed;
      await before;
      await this.#stream.write(bytes, head);
    })();
    this.#lastWrite = write.catch(() => {});
    return write;
  }

  /**
   * The next frame as it came, or null at the end. To be opened in the order of arrival; the
   * opening of one may overlap the reading of the next.
   */
  readSealed() {
    return this.#stream.read(this.largest);
  }

  /**
   * Opens the next record. Calls must begin in the order in which the frames came.
   * @param {Uint8Array} frame
   * @returns {Promise<{ type: number, body: Uint8Array }>}
   */
  async open(frame) {
    try {
      const head = frame.subarray(0, TYPE);
      if (frame.length < TYPE + TAG || head[1] || head[2] || head[3]) throw new Error('No record.');
      const body = await this.#incoming.open(headerOf(head, frame.length), frame.subarray(TYPE));
      return { type: head[0], body };
    } catch {
      throw new TransferError('not-understood');
    }
  }

  finish() {
    return this.#stream.finish();
  }

  close() {
    return this.#stream.close();
  }
}

/**
 * @param {Uint8Array} head
 * @param {number} size of what follows the size
 */
function headerOf(head, size) {
  const header = new Uint8Array(4 + TYPE);
  new DataView(header.buffer).setUint32(0, size);
  header.set(head, 4);
  return header;
}
