// The handshake's frames: a size (32 bits, big-endian) and so many bytes.

import { TransferError } from './errors.js';
import { Limit, Time } from './limits.js';

const PREFIX = 4;

/** @typedef {import('../engine/sockets.js').TcpConnection} TcpConnection */
/** Of one direction each, for this connection alone.
 *  @typedef {{ send: Uint8Array, receive: Uint8Array }} RecordKeys */

export class FrameStream {
  #connection;
  /** @type {Promise<import('../engine/transfers.js').SealedConnection> | null} */
  #sealed = null;

  /** @param {TcpConnection} connection */
  constructor(connection) {
    this.#connection = connection;
  }

  get peer() {
    return this.#connection.peer;
  }

  /**
   * The next frame; null at the other side's end. Throws where the end comes within a frame, or
   * the frame is larger than a stranger's may be. One read at a time.
   * @returns {Promise<Uint8Array | null>}
   */
  async read() {
    const prefix = await this.#connection.read(PREFIX);
    if (prefix.length === 0) return null;
    if (prefix.length < PREFIX) throw new TransferError('lost');
    const size = new DataView(prefix.buffer, prefix.byteOffset, PREFIX).getUint32(0);
    if (size === 0 || size > Limit.strangersFrame) throw new TransferError('not-understood');
    const frame = await this.#connection.read(size);
    if (frame.length < size) throw new TransferError('lost');
    return frame;
  }

  /**
   * Resolves when the system has taken it.
   * @param {Uint8Array} frame
   */
  write(frame) {
    const prefix = new Uint8Array(PREFIX);
    new DataView(prefix.buffer).setUint32(0, frame.length);
    return this.#connection.write(frame, prefix);
  }

  /**
   * The connection after the handshake, on which only records travel: nothing but close() may be
   * called here from then on.
   * @param {RecordKeys} keys
   */
  protect(keys) {
    this.#sealed = this.#connection.protect(keys, Time.silence);
    return this.#sealed;
  }

  /** Sends nothing more. */
  async finish() {
    await this.#connection.finish().catch(() => {});
  }

  /** Pending reads and writes fail. */
  async close() {
    const connection = (await this.#sealed?.catch(() => null)) ?? this.#connection;
    await connection.close().catch(() => {});
  }
}

/**
 * Waits for something on a connection, and closes it where that does not come in time.
 * @template T
 * @param {Promise<T>} promise
 * @param {number} limit in milliseconds
 * @param {{ close: () => unknown }} connection
 * @param {string} code of the error
 * @returns {Promise<T>}
 */
export function within(promise, limit, connection, code) {
  return new Promise((resolve, reject) => {
    const timer = setTimeout(() => {
      connection.close();
      reject(new TransferError(code));
    }, limit);
    promise.then(resolve, reject).finally(() => clearTimeout(timer));
  });
}
