// The engine's standard message codec: a tag byte a value, little-endian numbers, sizes in one,
// three or five bytes, and numbers wider than four bytes aligned to their width from the start of
// the message.
//
//   null, undefined      null                 Uint8Array       byte list
//   boolean              boolean              Int32Array       int32 list
//   number, whole        int32 or int64       BigInt64Array    int64 list
//   number, other        float64              Float32Array     float32 list
//   Float64              float64              Float64Array     float64 list
//   bigint               int64                Array            list
//   string               string               Map, object      map
//
// A value of any other kind is a CodecError: an ArrayBuffer, a Uint8ClampedArray, a Set, an object of a
// class.
//
// Decoding gives the same types back. An int64 that a number holds exactly comes as a number, and a
// map whose keys are all strings as an object without a prototype.

const TAG = {
  null: 0,
  true: 1,
  false: 2,
  int32: 3,
  int64: 4,
  float64: 6,
  string: 7,
  bytes: 8,
  int32List: 9,
  int64List: 10,
  float64List: 11,
  list: 12,
  map: 13,
  float32List: 14,
};
const SIZE_16 = 254;
const SIZE_32 = 255;
const MAXIMUM_DEPTH = 128;
// From this size on, a byte list is sent as it stands instead of being copied.
const SHARED_BYTES = 4096;

const textEncoder = new TextEncoder();
const textDecoder = new TextDecoder('utf-8', { fatal: true, ignoreBOM: true });

/** A number that is to be sent as a fraction even when it is whole. */
export class Float64 {
  /** @param {number} value */
  constructor(value) {
    this.value = value;
  }
}

/** A value that the codec has no type for, or bytes that are not a message of it. */
export class CodecError extends Error {}

/** @param {object} value */
function isPlain(value) {
  const prototype = Object.getPrototypeOf(value);
  return prototype === null || prototype === Object.prototype;
}

/** @param {object} value */
function nameOf(value) {
  return value.constructor?.name || 'object of an unknown kind';
}

/** Writes values into a list of byte arrays. */
export class Writer {
  #buffer = new Uint8Array(256);
  #view = new DataView(this.#buffer.buffer);
  #length = 0;
  #flushed = 0;
  /** @type {Uint8Array[]} */
  #parts = [];

  /** @param {number} byte */
  writeByte(byte) {
    this.#reserve(1);
    this.#buffer[this.#length++] = byte;
  }

  /** @param {unknown} value */
  writeValue(value) {
    if (value === null || value === undefined) return this.writeByte(TAG.null);
    switch (typeof value) {
      case 'boolean':
        return this.writeByte(value ? TAG.true : TAG.false);
      case 'number':
        return this.#writeNumber(value);
      case 'bigint':
        return this.#writeInt64(value);
      case 'string':
        return this.#writeString(value);
      case 'object':
        return this.#writeObject(value);
      default:
        throw new CodecError(`A ${typeof value} cannot be sent.`);
    }
  }

  /** @returns {Uint8Array[]} */
  finish() {
    this.#flush();
    return this.#parts;
  }

  /** @param {number} value */
  #writeNumber(value) {
    if (!Number.isSafeInteger(value) || Object.is(value, -0)) return this.#writeFloat64(value);
    if (value !== (value | 0)) return this.#writeInt64(BigInt(value));
    this.writeByte(TAG.int32);
    this.#reserve(4);
    this.#view.setInt32(this.#length, value, true);
    this.#length += 4;
  }

  /** @param {bigint} value */
  #writeInt64(value) {
    if (BigInt.asIntN(64, value) !== value) throw new CodecError('An integer is beyond 64 bits.');
    this.writeByte(TAG.int64);
    this.#reserve(8);
    this.#view.setBigInt64(this.#length, value, true);
    this.#length += 8;
  }

  /** @param {number} value */
  #writeFloat64(value) {
    this.writeByte(TAG.float64);
    this.#align(8);
    this.#reserve(8);
    this.#view.setFloat64(this.#length, value, true);
    this.#length += 8;
  }

  /** @param {string} value */
  #writeString(value) {
    this.writeByte(TAG.string);
    this.#writeSizedBytes(textEncoder.encode(value));
  }

  /** @param {object} value */
  #writeObject(value) {
    if (value instanceof Uint8Array) {
      this.writeByte(TAG.bytes);
      this.#writeSizedBytes(value);
    } else if (value instanceof Int32Array) this.#writeNumbers(TAG.int32List, value);
    else if (value instanceof BigInt64Array) this.#writeNumbers(TAG.int64List, value);
    else if (value instanceof Float32Array) this.#writeNumbers(TAG.float32List, value);
    else if (value instanceof Float64Array) this.#writeNumbers(TAG.float64List, value);
    else if (value instanceof Float64) this.#writeFloat64(value.value);
    else if (Array.isArray(value)) this.#writeList(value);
    else if (value instanceof Map) this.#writeEntries([...value]);
    else if (isPlain(value)) this.#writeEntries(Object.entries(value));
    else throw new CodecError(`A ${nameOf(value)} cannot be sent.`);
  }

  /** @param {unknown[]} list */
  #writeList(list) {
    this.writeByte(TAG.list);
    this.#writeSize(list.length);
    for (const element of list) this.writeValue(element);
  }

  /** @param {[unknown, unknown][]} entries */
  #writeEntries(entries) {
    this.writeByte(TAG.map);
    this.#writeSize(entries.length);
    for (const [key, value] of entries) {
      this.writeValue(key);
      this.writeValue(value);
    }
  }

  /**
   * @param {number} tag
   * @param {Int32Array | BigInt64Array | Float32Array | Float64Array} list
   */
  #writeNumbers(tag, list) {
    this.writeByte(tag);
    this.#writeSize(list.length);
    this.#align(list.BYTES_PER_ELEMENT);
    this.#writeBytes(new Uint8Array(list.buffer, list.byteOffset, list.byteLength));
  }

  /** @param {Uint8Array} bytes */
  #writeSizedBytes(bytes) {
    this.#writeSize(bytes.length);
    this.#writeBytes(bytes);
  }

  /** @param {number} size */
  #writeSize(size) {
    if (size < SIZE_16) return this.writeByte(size);
    if (size > 0xffffffff) throw new CodecError('A value is beyond 4 GiB.');
    const isNarrow = size <= 0xffff;
    this.writeByte(isNarrow ? SIZE_16 : SIZE_32);
    this.#reserve(4);
    if (isNarrow) this.#view.setUint16(this.#length, size, true);
    else this.#view.setUint32(this.#length, size, true);
    this.#length += isNarrow ? 2 : 4;
  }

  /** @param {Uint8Array} bytes */
  #writeBytes(bytes) {
    if (bytes.length >= SHARED_BYTES) {
      this.#flush();
      this.#parts.push(bytes);
      this.#flushed += bytes.length;
      return;
    }
    this.#reserve(bytes.length);
    this.#buffer.set(bytes, this.#length);
    this.#length += bytes.length;
  }

  /** @param {number} width */
  #align(width) {
    while ((this.#flushed + this.#length) % width !== 0) this.writeByte(0);
  }

  /** @param {number} size */
  #reserve(size) {
    if (this.#length + size <= this.#buffer.length) return;
    const larger = new Uint8Array(Math.max(this.#buffer.length * 2, this.#length + size));
    larger.set(this.#buffer);
    this.#buffer = larger;
    this.#view = new DataView(larger.buffer);
  }

  #flush() {
    if (this.#length === 0) return;
    this.#parts.push(this.#buffer.subarray(0, this.#length));
    this.#flushed += this.#length;
    this.#buffer = new Uint8Array(256);
    this.#view = new DataView(this.#buffer.buffer);
    this.#length = 0;
  }
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
