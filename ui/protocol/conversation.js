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
    this.#read();
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
    if (this.#isOver && !code) return this.#hangUp();
    if (code) {
      const said = this.send(Type.end, jsonBytes({ code })).catch(() => {});
      await within(said, 1000, this.#frames, 'lost').catch(() => {});
    }
    await this.#stream.finish();
    return this.#hangUp();
  }

  async #hangUp() {
    this.#isOver = true;
    clearInterval(this.#pings);
    this.#wakeReader.splice(0).forEach((wake) => wake());
    this.#wakeTaker.splice(0).forEach((wake) => wake());
    await this.#stream.close();
  }

  async #read() {
    while (!this.#isOver) {
      const frame = within(this.#stream.readSealed(), Time.silence, this.#frames, 'lost');
      let bytes;
      try {
        bytes = await frame;
      } catch (error) {
        this.#arrive(Promise.reject(TransferError.of(error, 'lost')));
        break;
      }
      this.#arrive(bytes ? this.#stream.open(bytes) : Promise.resolve(null));
      if (!bytes) break;
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
