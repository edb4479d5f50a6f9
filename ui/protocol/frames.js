// Frames on a connection: a size (32 bits, big-endian) and so many bytes.

import { joined } from './bytes.js';
import { TransferError } from './errors.js';

const PREFIX = 4;
const NOTHING = new Uint8Array(0);

/** Frames above this size are read in pieces, so that a slow one is seen to be coming. */
const SMALLEST_PIECE = 4 << 10;
const FIRST_PIECE = 64 << 10;
/** In milliseconds: pieces that take less grow, those that take more shrink. */
const QUICK = 100;
const SLOW = 1000;

/** @typedef {import('../engine/sockets.js').TcpConnection} TcpConnection */

export class FrameStream {
  #connection;
  /** What was read of the next frame's size along with the frame before it. */
  #ahead = NOTHING;
  #piece = FIRST_PIECE;
  /** Called whenever something was read. */
  onBytes = () => {};

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
      this.onBytes();
    }
    const view = new DataView(this.#ahead.buffer, this.#ahead.byteOffset, PREFIX);
    const size = view.getUint32(0);
    if (size === 0 || size > largest) throw new TransferError('not-understood');
    const bytes = await this.#readBody(size);
    this.#ahead = bytes.slice(size);
    return bytes.subarray(0, size);
  }

  /**
   * Resolves when the system has taken it.
   * @param {Uint8Array} frame
   * @param {Uint8Array} [head] the frame's first bytes, where they stand elsewhere
   */
  write(frame, head = NOTHING) {
    const prefixed = new Uint8Array(PREFIX + head.length);
    new DataView(prefixed.buffer).setUint32(0, head.length + frame.length);
    prefixed.set(head, PREFIX);
    return this.#connection.write(frame, prefixed);
  }

  /** Sends nothing more. */
  async finish() {
    await this.#connection.finish().catch(() => {});
  }

  /** What waits on it fails. */
  async close() {
    await this.#connection.close().catch(() => {});
  }

  /**
   * A frame's bytes, and at most the next frame's size behind them.
   * @param {number} size
   */
  async #readBody(size) {
    if (size <= this.#piece) return this.#readPiece(size, size + PREFIX);
    const whole = new Uint8Array(size + PREFIX);
    let filled = 0;
    while (filled < size) {
      const started = performance.now();
      const rest = size - filled;
      const bytes = await this.#readPiece(Math.min(rest, this.#piece), rest + PREFIX);
      whole.set(bytes, filled);
      filled += bytes.length;
      const elapsed = performance.now() - started;
      if (elapsed < QUICK) this.#piece = Math.min(2 * this.#piece, 8 << 20);
      else if (elapsed > SLOW) this.#piece = Math.max(SMALLEST_PIECE, this.#piece / 2);
    }
    return whole.subarray(0, filled);
  }

  /**
   * @param {number} minimum
   * @param {number} maximum
   */
  async #readPiece(minimum, maximum) {
    const bytes = await this.#connection.read(minimum, maximum);
    if (bytes.length < minimum) throw new TransferError('lost');
    this.onBytes();
    return bytes;
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
