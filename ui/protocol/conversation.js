// A transfer's two sides talking over a sealed stream: whole records in order, with signs of life
// while there is nothing to say, and an end that always has a reason.
//
// Until trust() is called the other side is a stranger: its frames are small and few.

import { jsonBytes, objectOf } from './bytes.js';
import { TransferError } from './errors.js';
import { within } from './frames.js';
import { Limit, Time } from './limits.js';

export const Type = {
  greeting: 1,
  confirmed: 2,
  offer: 3,
  offered: 4,
  have: 5,
  accepted: 6,
  checked: 7,
  sent: 8,
  taken: 9,
  received: 10,
  end: 11,
  ping: 12,
  content: 64,
};

/** Records that are read, or being opened, before somebody takes them. */
const AHEAD = 4;
const SECOND = 1000; // ms

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
  #isTrusted = false;
  #records = 0;
  #pings = 0;
  #began = performance.now();
  #heard = performance.now();
  #isReading = false;
  #unwritten = 0;
  #timers;
  #reading;
  #closed = Promise.resolve();

  /**
   * @param {import('./sealed_stream.js').SealedStream} stream
   * @param {import('./frames.js').FrameStream} frames what it stands on
   */
  constructor(stream, frames) {
    this.#stream = stream;
    this.#frames = frames;
    frames.onBytes = () => {
      this.#heard = performance.now();
    };
    this.#timers = [
      setInterval(() => {
        if (this.#unwritten === 0) this.send(Type.ping).catch(() => {});
      }, Time.ping),
      setInterval(() => this.#endSilence(), SECOND),
    ];
    this.#reading = this.#read();
  }

  /** Whether it is over, by whichever side. */
  get isOver() {
    return this.#isOver;
  }

  /** Lets the other side send as much as a transfer needs. */
  trust() {
    this.#isTrusted = true;
    this.#wakeReaders();
    this.#stream.largest = Limit.frame;
  }

  /**
   * Resolves when the system has taken it.
   * @param {number} type
   * @param {Uint8Array} [body]
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
   * The other side's next record that is no ping. Throws the reason of its end, and where there is
   * no more.
   * @returns {Promise<Received>}
   */
  async next() {
    for (;;) {
      while (this.#arrived.length === 0) {
        if (this.#isOver) throw new TransferError('lost');
        await new Promise((resolve) => {
          this.#wakeTaker.push(() => resolve(null));
          this.#wakeReaders();
        });
      }
      const taken = this.#arrived.shift();
      this.#wakeReaders();
      const record = await taken;
      if (!record) throw new TransferError('lost');
      this.#charge(record);
      if (record.type === Type.end) throw TransferError.told(contentOf(record.body).code);
      if (record.type !== Type.ping) return record;
    }
  }

  /**
   * What the next record says, which has to be of one type.
   * @param {number} type
   * @returns {Promise<Record<string, any>>}
   */
  async expect(type) {
    const record = await this.next();
    if (record.type !== type) throw new TransferError('not-understood');
    return contentOf(record.body);
  }

  /**
   * Tells the other side why this is the end, if it can still hear, and hangs up.
   * @param {string} [code] nothing where all is said
   */
  async close(code) {
    if (this.#isOver) return this.#closed;
    this.#isOver = true;
    this.#timers.forEach(clearInterval);
    this.#arrived = [];
    this.#wakeReaders();
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
      while (!this.#mayReadOn()) {
        await new Promise((resolve) => this.#wakeReader.push(() => resolve(null)));
      }
      let frame;
      try {
        this.#heard = performance.now();
        this.#isReading = true;
        frame = await this.#stream.readSealed();
      } catch (error) {
        this.#arrive(Promise.reject(TransferError.of(error, 'lost')));
        return;
      } finally {
        this.#isReading = false;
      }
      if (!this.#isOver) this.#arrive(frame ? this.#stream.open(frame) : Promise.resolve(null));
      if (!frame) return;
    }
  }

  /** A stranger's record is read when somebody waits for it: the one before may change the bounds. */
  #mayReadOn() {
    if (this.#isOver) return true;
    return this.#isTrusted ? this.#arrived.length < AHEAD : this.#wakeTaker.length > 0;
  }

  #wakeReaders() {
    this.#wakeReader.splice(0).forEach((wake) => wake());
  }

  /** Silence is time without a byte: a large record may take long on a slow network. */
  #endSilence() {
    if (this.#isReading && performance.now() - this.#heard > Time.silence) this.#stream.close();
  }

  /**
   * Ends what sends more, or other, than anybody has to.
   * @param {Received} record
   */
  #charge({ type, body }) {
    const isPing = type === Type.ping;
    if (isPing) ++this.#pings;
    else if (!this.#isTrusted) ++this.#records;
    const pings = Limit.pings + (performance.now() - this.#began) / SECOND;
    const tooMany = this.#pings > pings || this.#records > Limit.strangersRecords;
    const tooLarge =
      (isPing && body.length > 0) || (type < Type.content && body.length > Limit.control);
    if (tooMany || tooLarge) throw new TransferError('not-understood');
  }

  /** @param {Promise<Received | null>} record */
  #arrive(record) {
    record.catch(() => {}); // thrown to whoever takes it
    this.#arrived.push(record);
    this.#wakeTaker.splice(0).forEach((wake) => wake());
  }
}

/**
 * What a control record says; nothing where its body is empty.
 * @param {Uint8Array} body
 * @returns {Record<string, any>}
 */
export function contentOf(body) {
  if (body.length === 0) return {};
  try {
    return objectOf(body);
  } catch {
    throw new TransferError('not-understood');
  }
}
