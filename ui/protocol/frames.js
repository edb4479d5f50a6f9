// Frames on a connection: a size (32 bits, big-endian) and so many bytes.

import { joined } from './bytes.js';
import { TransferError } from './errors.js';

const PREFIX = 4;

/** @typedef {import('../engine/sockets.js').TcpConnection} TcpConnection */

export class FrameStream {
  #connection;
  /** What was read of the next frame's size along with the frame before it. */
  #ahead = new Uint8Array(0);

  /** @param {TcpConnection} connection */
  constructor(connection) {
    this.#connection = connection;
  }

  get peer() {
    return this.#connection.peer;
  }

  /**
   * The next frame; null at the other side's end. Throws where the end comes within a frame, or
   * the frame is larger than `largest`. One read at a time.
   * @param {number} largest
   * @returns {Promise<Uint8Array | null>}
   */
  async read(largest) {
    if (this.#ahead.length < PREFIX) {
      const more = await this.#connection.read(PREFIX - this.#ahead.length);
      this.#ahead = joined(this.#ahead, more);
      if (this.#ahead.length === 0) return null;
      if (this.#ahead.length < PREFIX) throw new TransferError('lost');
    }
    const view = new DataView(this.#ahead.buffer, this.#ahead.byteOffset, PREFIX);
    const size = view.getUint32(0);
    if (size === 0 || size > largest) throw new TransferError('not-understood');
    const bytes = await this.#connection.read(size, size + PREFIX);
    if (bytes.length < size) throw new TransferError('lost');
    this.#ahead = bytes.slice(size);
    return bytes.subarray(0, size);
  }

  /**
   * Resolves when the system has taken it.
   * @param {Uint8Array} frame
   */
  write(frame) {
    const prefixed = new Uint8Array(PREFIX + frame.length);
    new DataView(prefixed.buffer).setUint32(0, frame.length);
    prefixed.set(frame, PREFIX);
    return this.#connection.write(prefixed);
  }

  /** Sends nothing more. */
  async finish() {
    await this.#connection.finish().catch(() => {});
  }

  /** What waits on it fails. */
  async close() {
    await this.#connection.close().catch(() => {});
  }
}

/**
 * Waits for something on a stream, and closes the stream where it does not come in time.
 * @template T
 * @param {Promise<T>} promise
 * @param {number} limit in milliseconds
 * @param {FrameStream} stream
 * @param {string} code of the error
 * @returns {Promise<T>}
 */
export function within(promise, limit, stream, code) {
  return new Promise((resolve, reject) => {
    const timer = setTimeout(() => {
      stream.close();
      reject(new TransferError(code));
    }, limit);
    promise.then(resolve, reject).finally(() => clearTimeout(timer));
  });
}
