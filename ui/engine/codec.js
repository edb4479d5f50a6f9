// The types of the engine's standard message codec. In a message a value is a tag byte and its content:
// little-endian numbers, sizes in one, three or five bytes, and numbers wider than four bytes aligned to
// their width from the start of the message.
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

/** The first byte of a value, by its type. */
export const TAG = {
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
/** A first byte of a size that announces two or four bytes. */
export const SIZE_16 = 254;
export const SIZE_32 = 255;

/** A number that is to be sent as a fraction even when it is whole. */
export class Float64 {
  /** @param {number} value */
  constructor(value) {
    this.value = value;
  }
}

/** A value that the codec has no type for, or bytes that are not a message of it. */
export class CodecError extends Error {}
