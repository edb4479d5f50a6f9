// A transfer's two sides talking over a sealed stream: whole records in order, with signs of life
// while there is nothing to say, and an end that always has a reason.

import { jsonBytes, objectOf } from './bytes.js';
import { TransferError } from './errors.js';
import { within } from './frames.js';
import { Time } from './limits.js';

export const Type = {
  greeting: 1,
  confirmed: 2,
  offer: 3,
  offered: 4,
  accepted: 5,
  data: 6,
  sent: 7,
  received: 8,
  end: 9,
  ping: 10,
};

/** Records that are read, or being opened, before somebody takes them. */
const AHEAD = 4;

/** @typedef {{ type: number, body: Uint8Array }} Received */

export class Conversation {
  #stream;
  #frames;
  /** @type {Promise<Received | null>[]} */
  #arrived = [];
  /** @type {(() => void)[]} */
  #wakeReader = [];
  /** @type {(() => void)[]} */
  #wakeTaker = [];
  #isOver = false;
  #unwritten = 0;
  #pings;
  #reading;
  #closed = Promise.resolve();

  /**
   * @param {import('./sealed_stream.js').SealedStream} stream
   * @param {import('./frames.js').FrameStream} frames what it stands on
   */
  constructor(stream, frames) {
    this.#stream = stream;
    this.#frames = frames;
    this.#pings = setInterval(() => {
      if (this.#unwritten === 0) this.send(Type.ping).catch(() => {});
    }, Time.ping);
    this.#reading = this.#read();
  }

  /**
   * Resolves when the system has taken it.
   * @param {number} type
   * @param {Uint8Array | import('./sealed_stream.js').RecordBuffer} [body]
   */
  async send(type, body) {
    ++this.#unwritten;
    try {
      await this.#stream.send(type, body);
    } finally {
      --this.#unwritten;
    }
  }

  /**
   * The other side's next record. Throws the reason of its end, and where there is no more.
   * @returns {Promise<Received>}
   */
  async next() {
    while (this.#arrived.length === 0) {
      if (this.#isOver) throw new TransferError('lost');
      await new Promise((resolve) => this.#wakeTaker.push(() => resolve(null)));
    }
    const taken = this.#arrived.shift();
    this.#wakeReader.splice(0).forEach((wake) => wake());
    const record = await taken;
    if (!record) throw new TransferError('lost');
    if (record.type === Type.ping) return this.next();
    if (record.type === Type.end) throw TransferError.told(reasonIn(record.body));
    return record;
  }

  /**
   * The next record, which has to be of one type.
   * @param {number} type
   */
  async expect(type) {
    const record = await this.next();
    if (record.type !== type) throw new TransferError('not-understood');
    return record.body;
  }

  /**
   * Tells the other side why this is the end, if it can still hear, and hangs up.
   * @param {string} [code] nothing where all is said
   */
  async close(code) {
    if (this.#isOver) return this.#closed;
    this.#isOver = true;
    clearInterval(this.#pings);
    this.#arrived = [];
    this.#wakeReader.splice(0).forEach((wake) => wake());
    this.#wakeTaker.splice(0).forEach((wake) => wake());
    this.#closed = this.#partWith(code).finally(() => this.#stream.close());
    return this.#closed;
  }

  /** @param {string | undefined} code */
  async #partWith(code) {
    const farewell = code ? this.#stream.send(Type.end, jsonBytes({ code })) : Promise.resolve();
    // Hanging up on bytes that were not read resets the connection, and the other side might never
    // hear why. So what it still sends is read until it hangs up as well.
    const parted = farewell.then(() => this.#stream.finish()).then(() => this.#reading);
    await within(parted, Time.farewell, this.#frames, 'lost').catch(() => {});
  }

  async #read() {
    for (;;) {
      let frame;
      try {
        frame = await within(this.#stream.readSealed(), Time.silence, this.#frames, 'lost');
      } catch (error) {
        this.#arrive(Promise.reject(TransferError.of(error, 'lost')));
        return;
      }
      if (!this.#isOver) this.#arrive(frame ? this.#stream.open(frame) : Promise.resolve(null));
      if (!frame) return;
      while (this.#arrived.length >= AHEAD && !this.#isOver) {
        await new Promise((resolve) => this.#wakeReader.push(() => resolve(null)));
      }
    }
  }

  /** @param {Promise<Received | null>} record */
  #arrive(record) {
    record.catch(() => {});  // thrown to whoever takes it
    this.#arrived.push(record);
    this.#wakeTaker.splice(0).forEach((wake) => wake());
  }
}

/** @param {Uint8Array} body */
function reasonIn(body) {
  try {
    return objectOf(body).code;
  } catch {
    return undefined;
  }
}
