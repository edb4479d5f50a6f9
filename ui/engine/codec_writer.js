// Writes values of the standard message codec.

import { CodecError, Float64, SIZE_16, SIZE_32, TAG } from './codec.js';

// From this size on, a byte list is sent as it stands instead of being copied.
const SHARED_BYTES = 4096;

/** Bytes of the keys of maps that are kept as they were last written: the same few come again and
 *  again. */
const SHORT_KEY = 32;
const KEYS_KEPT = 256;

const textEncoder = new TextEncoder();

/** @type {Map<string, Uint8Array>} */
const writtenKeys = new Map();

/** @param {string} key */
function bytesOfKey(key) {
  const kept = writtenKeys.get(key);
  if (kept) return kept;
  const bytes = textEncoder.encode(key);
  if (bytes.length <= SHORT_KEY && writtenKeys.size < KEYS_KEPT) writtenKeys.set(key, bytes);
  return bytes;
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
    const most = 3 * value.length; // a UTF-16 unit takes three bytes at most
    if (most >= SIZE_16) return this.#writeSizedBytes(textEncoder.encode(value));
    this.#reserve(1 + most);
    const start = this.#length + 1;
    const written = this.#writeAscii(value, start)
      ? value.length
      : textEncoder.encodeInto(value, this.#buffer.subarray(start, start + most)).written;
    this.#buffer[this.#length] = written;
    this.#length = start + written;
  }

  /**
   * Writes a text that is ASCII, as most are, without making a view of the buffer. False for others.
   * @param {string} text
   * @param {number} start
   */
  #writeAscii(text, start) {
    for (let at = 0; at < text.length; ++at) {
      const unit = text.charCodeAt(at);
      if (unit > 0x7f) return false;
      this.#buffer[start + at] = unit;
    }
    return true;
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
      if (typeof key === 'string') {
        this.writeByte(TAG.string);
        this.#writeSizedBytes(bytesOfKey(key));
      } else {
        this.writeValue(key);
      }
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

/** @param {object} value */
function isPlain(value) {
  const prototype = Object.getPrototypeOf(value);
  return prototype === null || prototype === Object.prototype;
}

/** @param {object} value */
function nameOf(value) {
  return value.constructor?.name || 'object of an unknown kind';
}
