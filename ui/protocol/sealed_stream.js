// Records between two devices that know each other's keys. What is sealed begins with a header that
// says which session it belongs to, which way it goes and that it is the next one, so that a record
// can't be replayed, reordered, left out, turned back or moved into another session unseen.
//
// A connection carries one transfer, so the session is the transfer's name as well.
//
//   32 bytes  session
//    1 byte   direction: 0 from the caller, 1 to it
//    1 byte   type
//    6 bytes  zero
//    8 bytes  counter, from 0

import { equalBytes } from './bytes.js';
import { TransferError } from './errors.js';
import { Limit } from './limits.js';

const SESSION = 32;
const DIRECTION_AT = 32;
const TYPE_AT = 33;
const COUNTER_AT = 40;
export const HEADER = 48;

/** Room for one record's body; `record` is the whole, with space for the header. */
export class RecordBuffer {
  /** @param {number} size of the body */
  constructor(size) {
    this.record = new Uint8Array(HEADER + size);
    this.body = this.record.subarray(HEADER);
    this.view = new DataView(this.record.buffer, HEADER);
  }
}

/** @typedef {{ seal: (data: Uint8Array) => Promise<Uint8Array>,
 *              open: (data: Uint8Array) => Promise<Uint8Array> }} Cipher */

export class SealedStream {
  #stream;
  #cipher;
  #session;
  #outgoing;
  #sent = 0n;
  #received = 0n;
  /** @type {Promise<unknown>} */
  #lastWrite = Promise.resolve();

  /**
   * @param {import('./frames.js').FrameStream} stream
   * @param {Cipher} cipher with the key of the two devices
   * @param {import('./handshake.js').Session} session
   */
  constructor(stream, cipher, session) {
    this.#stream = stream;
    this.#cipher = cipher;
    this.#session = session.session;
    this.#outgoing = session.isCaller ? 0 : 1;
  }

  /**
   * Sends a record; resolves when the system has taken it. Records leave in the order of the calls,
   * while several are sealed at once.
   * @param {number} type
   * @param {Uint8Array | RecordBuffer} [body]
   */
  send(type, body = new Uint8Array(0)) {
    const record = this.#withHeader(type, body);
    const sealed = this.#cipher.seal(record);
    const before = this.#lastWrite;
    const write = (async () => {
      const frame = await sealed;
      await before;
      await this.#stream.write(frame);
    })();
    this.#lastWrite = write.catch(() => {});
    return write;
  }

  /**
   * The next frame as it came, or null at the end. To be opened in the order of arrival; the
   * opening of one may overlap the reading of the next.
   */
  readSealed() {
    return this.#stream.read(Limit.frame);
  }

  /**
   * Opens the next record. Calls must begin in the order in which the frames came.
   * @param {Uint8Array} frame
   * @returns {Promise<{ type: number, body: Uint8Array }>}
   */
  async open(frame) {
    const counter = this.#received++;
    let record;
    try {
      record = await this.#cipher.open(frame);
    } catch {
      throw new TransferError('not-understood');
    }
    if (record.length < HEADER || !this.#isExpected(record, counter)) {
      throw new TransferError('not-understood');
    }
    return { type: record[TYPE_AT], body: record.subarray(HEADER) };
  }

  finish() {
    return this.#stream.finish();
  }

  close() {
    return this.#stream.close();
  }

  /**
   * @param {Uint8Array} record
   * @param {bigint} counter
   */
  #isExpected(record, counter) {
    const view = new DataView(record.buffer, record.byteOffset, HEADER);
    return equalBytes(record.subarray(0, SESSION), this.#session) &&
      record[DIRECTION_AT] === 1 - this.#outgoing &&
      view.getBigUint64(COUNTER_AT) === counter;
  }

  /**
   * @param {number} type
   * @param {Uint8Array | RecordBuffer} body
   */
  #withHeader(type, body) {
    let record;
    if (body instanceof RecordBuffer) {
      record = body.record;
    } else {
      record = new Uint8Array(HEADER + body.length);
      record.set(body, HEADER);
    }
    record.set(this.#session);
    record[DIRECTION_AT] = this.#outgoing;
    record[TYPE_AT] = type;
    new DataView(record.buffer).setBigUint64(COUNTER_AT, this.#sent++);
    return record;
  }
}
