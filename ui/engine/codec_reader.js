// Reads values of the standard message codec.

import { CodecError, SIZE_16, SIZE_32, TAG } from './codec.js';

const MAXIMUM_DEPTH = 128;

const textDecoder = new TextDecoder('utf-8', { fatal: true, ignoreBOM: true });

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
        return this.#nested(() => this.#readList());
      case TAG.map:
        return this.#nested(() => this.#readMap());
      default:
        throw new CodecError(`There is no type ${tag}.`);
    }
  }

  expectEnd() {
    if (this.#remaining() !== 0) throw new CodecError('Bytes follow the last value.');
  }

  #readInt64() {
    const value = this.#view.getBigInt64(this.#take(8), true);
    const number = Number(value);
    return Number.isSafeInteger(number) ? number : value;
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
    const size = this.#readSize();
    if (size > this.#remaining()) throw new CodecError('A list is cut short.');
    const list = [];
    for (let index = 0; index < size; ++index) list.push(this.readValue());
    return list;
  }

  #readMap() {
    const size = this.#readSize();
    if (size > this.#remaining() / 2) throw new CodecError('A map is cut short.');
    /** @type {[unknown, unknown][]} */
    const entries = [];
    for (let index = 0; index < size; ++index) entries.push([this.readValue(), this.readValue()]);
    if (!entries.every(([key]) => typeof key === 'string')) return new Map(entries);
    const object = Object.create(null);
    for (const [key, value] of entries) object[/** @type {string} */ (key)] = value;
    return object;
  }

  /**
   * @template T
   * @param {() => T} read
   */
  #nested(read) {
    if (++this.#depth > MAXIMUM_DEPTH)
      throw new CodecError('Lists and maps are nested too deeply.');
    const value = read();
    --this.#depth;
    return value;
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
