// Named channels of method calls between the UI and the host.

import { CodecError } from './codec.js';
import { Reader } from './codec_reader.js';
import { Writer } from './codec_writer.js';
import { listen, sendMessage } from './link.js';

/** Bytes of a message that is read in one go. */
const LARGE = 64 << 10;

/** The host answered a call with an error. */
export class MethodError extends Error {
  /**
   * @param {string} code
   * @param {string} message
   * @param {unknown} details
   */
  constructor(code, message, details) {
    super(message);
    this.name = 'MethodError';
    this.code = code;
    this.details = details;
  }
}

/** Nobody implements the method that was called. */
export class MissingMethodError extends Error {
  /**
   * @param {string} channel
   * @param {string} method
   */
  constructor(channel, method) {
    super(`The host has no method “${method}” on the channel “${channel}”.`);
    this.name = 'MissingMethodError';
  }
}

/** @param {Uint8Array} reply */
function decodeReply(reply) {
  const reader = new Reader(reply);
  const isSuccess = reader.readByte() === 0;
  if (isSuccess) {
    const value = reader.readValue();
    reader.expectEnd();
    return value;
  }
  const code = String(reader.readValue());
  const message = String(reader.readValue());
  throw new MethodError(code, message, reader.readValue());
}

/** @param {Reader} reader */
function methodIn(reader) {
  const method = reader.readValue();
  if (typeof method !== 'string') throw new CodecError('A call does not begin with a name.');
  return method;
}

/**
 * @param {Uint8Array} message
 * @param {(method: string, args: any) => unknown} handler
 */
function called(message, handler) {
  const reader = new Reader(message);
  return handler(methodIn(reader), reader.readValue());
}

/**
 * @param {Uint8Array} message
 * @param {(method: string, args: any) => unknown} handler
 * @returns {Promise<{ handled: unknown }>} once the handler was called
 */
async function calledInSlices(message, handler) {
  const reader = new Reader(message);
  const method = methodIn(reader);
  const args = await reader.readValueInSlices();
  return { handled: handler(method, args) };
}

export class MethodChannel {
  #name;

  /** @param {string} name */
  constructor(name) {
    this.#name = name;
  }

  /**
   * Calls a method of the host. Rejects with a MethodError or a MissingMethodError.
   * @param {string} method
   * @param {unknown} [args]
   * @returns {Promise<any>}
   */
  async invokeMethod(method, args = null) {
    const writer = new Writer();
    writer.writeValue(method);
    writer.writeValue(args);
    const reply = await sendMessage(this.#name, writer.finish());
    if (reply.length === 0) throw new MissingMethodError(this.#name, method);
    return decodeReply(reply);
  }

  /**
   * Hears the host's calls of methods of the UI, one after the other. What came before is delivered
   * first. A call counts as handled once what the handler returns has resolved.
   * @param {(method: string, args: any) => unknown} handler
   */
  setMethodCallHandler(handler) {
    let waiting = 0;
    /** @type {Promise<unknown>} */
    let before = Promise.resolve();
    listen(this.#name, (message) => {
      if (waiting === 0 && message.length < LARGE) return called(message, handler);
      ++waiting;
      const turn = before.then(() => calledInSlices(message, handler));
      before = turn.catch(() => {}).then(() => --waiting);
      return turn.then(({ handled }) => handled);
    });
  }
}
