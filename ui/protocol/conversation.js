// One side of a transfer over a sealed connection: whole records in order, pings while there is nothing
// else to send, and an end that always has a reason.
//
// Until trust() is called, only few and small records are accepted.

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
};

const SECOND = 1000; // ms
const NOTHING = new Uint8Array(0);

/** @typedef {import('../engine/transfers.js').SealedConnection} SealedConnection */
/** @typedef {import('../engine/transfers.js').OutgoingPart} OutgoingPart */
/** @typedef {import('../engine/transfers.js').IncomingPart} IncomingPart */
/** @typedef {{ type: number, body: Uint8Array }} Received */
/** What has come: of content, and then a record.
 *  @typedef {import('../engine/transfers.js').Arrival & { record: Received | null }} Arrival */

export class Conversation {
  #connection;
  #isOver = false;
  #isTrusted = false;
  #records = 0;
  #pings = 0;
  #began = performance.now();
  #unwritten = 0;
  #pinging;
  #closed = Promise.resolve();

  /** @param {SealedConnection} connection */
  constructor(connection) {
    this.#connection = connection;
    this.#pinging = setInterval(() => {
      if (this.#unwritten === 0) this.send(Type.ping).catch(() => {});
    }, Time.ping);
  }

  /** Whether it is over, by whichever side. */
  get isOver() {
    return this.#isOver;
  }

  /** Lets the other side send as much as a transfer needs. */
  trust() {
    this.#isTrusted = true;
  }

  /**
   * Resolves when the system has taken it.
   * @param {number} type
   * @param {Uint8Array} [body]
   */
  send(type, body = NOTHING) {
    return this.#write(this.#connection.send(type, body));
  }

  /**
   * Sends content; resolves, with what could not be sent, when the system has taken the rest.
   * @param {OutgoingPart[]} parts
   */
  sendContent(parts) {
    return this.#write(this.#connection.sendContent(parts));
  }

  /**
   * Says where content goes that is to come.
   * @param {IncomingPart[]} parts
   */
  expectContent(parts) {
    return this.#connection.expect(parts);
  }

  /**
   * What comes next, but for pings: content, a record, or both. Throws the reason of the other side's
   * end, and where there is no more. One call at a time.
   * @returns {Promise<Arrival>}
   */
  async arrival() {
    for (;;) {
      const arrival = await this.#receive();
      const { type, body = NOTHING } = arrival;
      const record = type === undefined ? null : { type, body };
      if (record) this.#charge(record);
      if (record?.type === Type.end) throw TransferError.told(contentOf(body).code);
      const isPing = record?.type === Type.ping;
      if (record && !isPing) return { ...arrival, record };
      if (hasContent(arrival)) return { ...arrival, record: null };
      if (arrival.isEnd) throw new TransferError('lost');
    }
  }

  /**
   * The next record of the other side that is not a ping. Content before it is an error.
   * @returns {Promise<Received>}
   */
  async next() {
    const arrival = await this.arrival();
    if (!arrival.record || hasContent(arrival)) throw new TransferError('not-understood');
    return arrival.record;
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
   * Tells the other side why the conversation ends, if the connection still works, and closes it.
   * @param {string} [code] nothing where all is said
   */
  async close(code) {
    if (this.#isOver) return this.#closed;
    this.#isOver = true;
    clearInterval(this.#pinging);
    // Closing a socket with unread bytes resets the connection, and the other side might not receive the
    // reason. So its bytes are read until it closes as well.
    const parted = code
      ? this.#connection.part(Type.end, jsonBytes({ code }))
      : this.#connection.part();
    this.#closed = within(parted, Time.farewell, this.#connection, 'lost')
      .catch(() => {})
      .finally(() => this.#connection.close().catch(() => {}));
    return this.#closed;
  }

  async #receive() {
    if (this.#isOver) throw new TransferError('lost');
    const largest = this.#isTrusted ? Limit.frame : Limit.strangersFrame;
    const received = this.#connection.receive(largest, this.#isTrusted).catch((error) => {
      throw TransferError.of(error, 'lost');
    });
    const arrival = await received;
    if (this.#isOver) throw new TransferError('lost');
    return arrival;
  }

  /**
   * @template T
   * @param {Promise<T>} writing
   * @returns {Promise<T>}
   */
  async #write(writing) {
    ++this.#unwritten;
    try {
      return await writing;
    } finally {
      --this.#unwritten;
    }
  }

  /**
   * Ends the conversation if the other side sends more than is allowed, or something else.
   * @param {Received} record
   */
  #charge({ type, body }) {
    const isPing = type === Type.ping;
    if (isPing) ++this.#pings;
    else if (!this.#isTrusted) ++this.#records;
    const pings = Limit.pings + (performance.now() - this.#began) / SECOND;
    const tooMany = this.#pings > pings || this.#records > Limit.strangersRecords;
    if (tooMany || (isPing && body.length > 0)) throw new TransferError('not-understood');
  }
}

/** @param {import('../engine/transfers.js').Arrival} arrival */
const hasContent = ({ taken, whole, failed, wanted }) =>
  taken > 0 || whole.length > 0 || failed.length > 0 || wanted !== undefined;

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
