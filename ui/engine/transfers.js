// Sealed connections for UI code. The host seals and opens the records, reads the files that are sent
// and writes those that come; the page says which, and sends and receives the control records.
//
// An error of a connection is a MethodError with the code "socket_error", the system's text as message, and
// the error's name as details: "EBADMSG" and "EPROTO" for invalid records, "ECANCELED" once it is closed.
// Every later call fails with the same error.

import { MethodChannel } from './method_channel.js';

const channel = new MethodChannel('engine/transfers');

/** A file as it was offered, or bytes at hand, from an offset on. `size` is that of the whole;
 *  `modified` is in milliseconds since 1970.
 *  @typedef {{ entry: number, path?: string, bytes?: Uint8Array, offset: number, size: number,
 *              modified?: number }} OutgoingPart */
/** Where an entry's content goes: a file that is new, or that holds `offset` bytes already; memory
 *  where there is no path. More than `size` bytes are refused.
 *  @typedef {{ entry: number, path: string | null, offset: number, size: number }} IncomingPart */
/** An entry, the name of the system's error, and its text. "ESTALE": the file is no longer as it was
 *  offered. @typedef {[number, string | null, string]} PartFailure */
/**
 * What was received since the last call.
 * @typedef {object} Arrival
 * @property {number} taken bytes of content, with those that were there before
 * @property {Int32Array} whole entries of which all is there
 * @property {[number, Uint8Array][]} texts of them what went to memory and is not empty
 * @property {PartFailure[]} failed entries that cannot be written
 * @property {number} [wanted] an entry that has come, and has to be expected before anything more is
 *     received
 * @property {number} [type] of a control record that came after all this
 * @property {Uint8Array} [body]
 * @property {boolean} isEnd the other side sends nothing more
 */

export class SealedConnection {
  #handle;

  /** @param {number} handle */
  constructor(handle) {
    this.#handle = handle;
  }

  /**
   * @param {number} handle of a TCP connection
   * @param {{ send: Uint8Array, receive: Uint8Array }} keys
   * @param {number} silence in milliseconds
   */
  static async over(handle, keys, silence) {
    await channel.invokeMethod('protect', { handle, ...keys, silence });
    return new SealedConnection(handle);
  }

  /**
   * Resolves when the system has taken the record. Records leave in the order of the calls.
   * @param {number} type below 64
   * @param {Uint8Array} bytes
   * @returns {Promise<void>}
   */
  send(type, bytes) {
    return this.#call('send', { type, bytes });
  }

  /**
   * Sends content, in the order of the parts; resolves when the system has taken it, with the parts
   * that could not be sent.
   * @param {OutgoingPart[]} parts
   * @returns {Promise<PartFailure[]>}
   */
  sendContent(parts) {
    return this.#call('sendContent', { parts });
  }

  /**
   * Says where the content of entries goes that are still to come.
   * @param {IncomingPart[]} parts
   * @returns {Promise<void>}
   */
  expect(parts) {
    return this.#call('expect', { parts });
  }

  /**
   * Resolves with what was received: when there is a control record, an end, an entry that is not expected
   * yet or has failed, or content for a while. One call at a time.
   * @param {number} largest frame that is read, in bytes
   * @param {boolean} readsAhead whether the host goes on while nobody calls
   * @returns {Promise<Arrival>}
   */
  receive(largest, readsAhead) {
    return this.#call('receive', { largest, readsAhead });
  }

  /**
   * Sends a last record, or none, instead of what content still waits. Resolves at the other side's
   * end; what it sends until then is dropped.
   * @param {number} [type]
   * @param {Uint8Array} [bytes]
   * @returns {Promise<void>}
   */
  part(type = 0, bytes) {
    return this.#call('part', { type, bytes: bytes ?? null });
  }

  close() {
    return this.#call('close');
  }

  /**
   * @param {string} method
   * @param {object} [args]
   */
  #call(method, args = {}) {
    return channel.invokeMethod(method, { handle: this.#handle, ...args });
  }
}
