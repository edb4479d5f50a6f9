// Reads values of the standard message codec.

import { CodecError, SIZE_16, SIZE_32, TAG } from './codec.js';
import { Slices } from './slices.js';

const MAXIMUM_DEPTH = 128;

/** Bytes of the keys of maps that are kept as they were last read: the same few come again and
 *  again. */
const SHORT_KEY = 32;
const KEYS_KEPT = 256;

const textDecoder = new TextDecoder('utf-8', { fatal: true, ignoreBOM: true });

/** By a hash of their bytes. @type {({ bytes: Uint8Array, text: string } | undefined)[]} */
const readKeys = new Array(KEYS_KEPT);

/**
 * @param {Uint8Array} message
 * @param {number} start
 * @param {number} end
 */
function keyIn(message, start, end) {
  const size = end - start;
  if (size > SHORT_KEY) return textDecoder.decode(message.subarray(start, end));
  let hash = size;
  for (let at = start; at < end; ++at) hash = (hash * 31 + message[at]) | 0;
  const place = hash & (KEYS_KEPT - 1);
  const kept = readKeys[place];
  if (kept?.bytes.length === size) {
    let same = 0;
    while (same < size && message[start + same] === kept.bytes[same]) ++same;
    if (same === size) return kept.text;
  }
  const bytes = message.slice(start, end);
  const text = textDecoder.decode(bytes);
  readKeys[place] = { bytes, text };
  return text;
}

/** Reads values out of a message; byte lists are views of it. */
export class Reader {
  #message;
  #view;
  #position = 0;
  #depth = 0;

  /** @param {Uint8Array} message */
  constructor(message) {
    this.#message = message;
    this.#view = new DataView(message.buffer, message.byteOffset, message.byteLength);
  }

  readByte() {
    return this.#message[this.#take(1)];
  }

  /** @returns {unknown} */
  readValue() {
    const tag = this.readByte();
    switch (tag) {
      case TAG.null:
        return null;
      case TAG.true:
        return true;
      case TAG.false:
        return false;
      case TAG.int32:
        return this.#view.getInt32(this.#take(4), true);
      case TAG.int64:
        return this.#readInt64();
      case TAG.float64:
        this.#align(8);
        return this.#view.getFloat64(this.#take(8), true);
      case TAG.string:
        return textDecoder.decode(this.#readBytes());
      case TAG.bytes:
        return this.#readBytes();
      case TAG.int32List:
        return this.#readNumbers(Int32Array);
      case TAG.int64List:
        return this.#readNumbers(BigInt64Array);
      case TAG.float32List:
        return this.#readNumbers(Float32Array);
      case TAG.float64List:
        return this.#readNumbers(Float64Array);
      case TAG.list:
        return this.#readList();
      case TAG.map:
        return this.#readMap();
      default:
        throw new CodecError(`There is no type ${tag}.`);
    }
  }

  /**
   * A value; where it is a long list, with pauses in which the page does other things.
   * @returns {Promise<unknown>}
   */
  async readValueInSlices() {
    if (this.#message[this.#position] !== TAG.list) return this.readValue();
    ++this.#position;
    const size = this.#enter('list', 1);
    /** @type {unknown[]} */
    const list = [];
    const slices = new Slices();
    while (list.length < size) {
      list.push(this.readValue());
      if (slices.isOver) await slices.next();
    }
    --this.#depth;
    return list;
  }

  expectEnd() {
    if (this.#remaining() !== 0) throw new CodecError('Bytes follow the last value.');
  }

  #readInt64() {
    const at = this.#take(8);
    const number = this.#view.getInt32(at + 4, true) * 2 ** 32 + this.#view.getUint32(at, true);
    return Number.isSafeInteger(number) ? number : this.#view.getBigInt64(at, true);
  }

  #readSize() {
    const first = this.readByte();
    if (first === SIZE_16) return this.#view.getUint16(this.#take(2), true);
    if (first === SIZE_32) return this.#view.getUint32(this.#take(4), true);
    return first;
  }

  #readBytes() {
    const size = this.#readSize();
    const start = this.#take(size);
    return this.#message.subarray(start, start + size);
  }

  /**
   * @template {Int32Array | BigInt64Array | Float32Array | Float64Array} T
   * @param {{ new (buffer: ArrayBufferLike, offset: number, length: number): T,
   *           BYTES_PER_ELEMENT: number }} List
   */
  #readNumbers(List) {
    const size = this.#readSize();
    this.#align(List.BYTES_PER_ELEMENT);
    const start = this.#take(size * List.BYTES_PER_ELEMENT);
    const bytes = this.#message.slice(start, this.#position);
    return new List(bytes.buffer, 0, size);
  }

  #readList() {
    const size = this.#enter('list', 1);
    const list = [];
    for (let index = 0; index < size; ++index) list.push(this.readValue());
    --this.#depth;
    return list;
  }

  /** An object while all keys are strings. */
  #readMap() {
    const size = this.#enter('map', 2);
    const object = Object.create(null);
    for (let index = 0; index < size; ++index) {
      if (this.#message[this.#position] !== TAG.string) {
        return this.#readMapOn(new Map(Object.entries(object)), size - index);
      }
      ++this.#position;
      const keySize = this.#readSize();
      const start = this.#take(keySize);
      const key = keyIn(this.#message, start, start + keySize);
      object[key] = this.readValue();
    }
    --this.#depth;
    return object;
  }

  /**
   * @param {Map<unknown, unknown>} map
   * @param {number} count of entries that follow
   */
  #readMapOn(map, count) {
    for (let index = 0; index < count; ++index) map.set(this.readValue(), this.readValue());
    --this.#depth;
    return map;
  }

  /**
   * Begins a list or a map, and returns its size.
   * @param {string} what
   * @param {number} least bytes of an entry
   */
  #enter(what, least) {
    const size = this.#readSize();
    if (size > this.#remaining() / least) throw new CodecError(`A ${what} is cut short.`);
    if (++this.#depth > MAXIMUM_DEPTH)
      throw new CodecError('Lists and maps are nested too deeply.');
    return size;
  }

  #remaining() {
    return this.#message.length - this.#position;
  }

  /** @param {number} size */
  #take(size) {
    if (size > this.#remaining()) throw new CodecError('The message is cut short.');
    const start = this.#position;
    this.#position += size;
    return start;
  }

  /** @param {number} width */
  #align(width) {
    const past = this.#position % width;
    if (past !== 0) this.#take(width - past);
  }
}
