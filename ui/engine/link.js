// The page's end of the link to the host: frames out, frames in, by channel. The module that made
// the link put it on the global object; it is taken from there so that nothing else speaks on it.
//
// A frame is a header of eight bytes (kind, length of the channel's name, two unused bytes, the
// call's number in 32 little-endian bits), the channel's name padded to a multiple of eight, and the
// message.

import { CodecError } from './codec.js';

const KIND_MESSAGE = 0;
const KIND_REPLY = 1;
const KIND_LISTEN = 2;
const HEADER = 8;
const LARGEST_FRAME = 128 << 20; // the host answers a larger one with an error

const native = globalThis.brevanholtEngineLink;
delete globalThis.brevanholtEngineLink;

const textEncoder = new TextEncoder();
const textDecoder = new TextDecoder();

/** @type {Map<number, (message: Uint8Array) => void>} */
const waitingForReply = new Map();
/** @type {Map<string, (message: Uint8Array) => unknown>} */
const listeners = new Map();
let lastNumber = 0;

const padded = (/** @type {number} */ size) => Math.ceil(size / 8) * 8;

/**
 * @param {number} kind
 * @param {string} channel
 * @param {number} number
 * @param {Uint8Array[]} parts
 */
function sendFrame(kind, channel, number, parts) {
  if (!native) throw new Error('This page is not joined to a host.');
  const name = textEncoder.encode(channel);
  let size = HEADER + padded(name.length);
  for (const part of parts) size += part.length;
  if (size > LARGEST_FRAME) throw new CodecError('A message of more than 128 MiB cannot be sent.');
  const header = new Uint8Array(HEADER + padded(name.length));
  header[0] = kind;
  header[1] = name.length;
  new DataView(header.buffer).setUint32(4, number, true);
  header.set(name, HEADER);
  native.send(header, ...parts);
}

/** @param {Uint8Array} frame */
function receiveFrame(frame) {
  const view = new DataView(frame.buffer, frame.byteOffset, frame.byteLength);
  const kind = view.getUint8(0);
  const nameLength = view.getUint8(1);
  const number = view.getUint32(4, true);
  const message = frame.subarray(HEADER + padded(nameLength));
  if (kind === KIND_REPLY) {
    const resolve = waitingForReply.get(number);
    waitingForReply.delete(number);
    resolve?.(message);
  } else if (kind === KIND_MESSAGE) {
    const channel = textDecoder.decode(frame.subarray(HEADER, HEADER + nameLength));
    // The host may ask when it is handled.
    const handled = () => number && sendFrame(KIND_REPLY, '', number, []);
    new Promise((resolve) => resolve(listeners.get(channel)?.(message)))
      .catch(console.error)
      .then(handled);
  }
}

native?.connect((/** @type {Uint8Array} */ frame) => {
  try {
    receiveFrame(frame);
  } catch (error) {
    console.error(error);
  }
});

/**
 * Sends a message, given in parts, and resolves with the host's reply; the empty reply means that
 * nobody answers on that channel. Calls arrive in the order in which they are made.
 * @param {string} channel
 * @param {Uint8Array[]} parts
 * @returns {Promise<Uint8Array>}
 */
export function sendMessage(channel, parts) {
  lastNumber = (lastNumber + 1) >>> 0 || 1;
  const number = lastNumber;
  return new Promise((resolve) => {
    sendFrame(KIND_MESSAGE, channel, number, parts);
    waitingForReply.set(number, resolve);
  });
}

/**
 * Sets the one listener of a channel. The host keeps what it sends until there is one. A message counts
 * as handled once what the listener returns has resolved.
 * @param {string} channel
 * @param {(message: Uint8Array) => unknown} listener
 */
export function listen(channel, listener) {
  const isFirst = !listeners.has(channel);
  listeners.set(channel, listener);
  if (isFirst) sendFrame(KIND_LISTEN, channel, 0, []);
}
