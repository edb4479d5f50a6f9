// The body of content records: pieces of files, one after the other, in the order of the manifest.
//
//   4 bytes  entry, by its place in the manifest
//   4 bytes  length
//   8 bytes  offset in the entry, then so many bytes

import { TransferError } from './errors.js';
import { Limit } from './limits.js';

const HEAD = 16;

/** @typedef {{ index: number, offset: number, length: number }} Segment */
/** @typedef {Segment & { bytes: Uint8Array }} FilledSegment */

/**
 * What is to be sent, in pieces that fill records of about the size of a chunk. An entry has a piece
 * at least, even if that is empty.
 * @param {{ size: number }[]} entries
 * @param {Iterable<[number, number]>} starts the entries that are to be sent, each with its first
 *     offset
 * @returns {Generator<Segment[]>}
 */
export function* segmentsOf(entries, starts) {
  /** @type {Segment[]} */
  let record = [];
  let room = Limit.chunk;
  for (const [index, start] of starts) {
    const { size } = entries[index];
    let offset = start;
    do {
      const length = Math.min(size - offset, room);
      record.push({ index, offset, length });
      offset += length;
      room -= length;
      if (room === 0 || record.length === Limit.segments) {
        yield record;
        record = [];
        room = Limit.chunk;
      }
    } while (offset < size);
  }
  if (record.length > 0) yield record;
}

/**
 * The body of a record of these segments.
 * @param {FilledSegment[]} segments
 */
export function contentRecord(segments) {
  const size = segments.reduce((sum, { length }) => sum + HEAD + length, 0);
  const body = new Uint8Array(size);
  const view = new DataView(body.buffer);
  let at = 0;
  for (const { index, offset, length, bytes } of segments) {
    view.setUint32(at, index);
    view.setUint32(at + 4, length);
    view.setBigUint64(at + 8, BigInt(offset));
    body.set(bytes, at + HEAD);
    at += HEAD + length;
  }
  return body;
}

/**
 * @param {Uint8Array} body of a content record
 * @returns {Generator<FilledSegment>}
 */
export function* segmentsIn(body) {
  const view = new DataView(body.buffer, body.byteOffset, body.length);
  let count = 0;
  for (let at = 0; at < body.length;) {
    if (body.length - at < HEAD || ++count > Limit.segments)
      throw new TransferError('not-understood');
    const index = view.getUint32(at);
    const length = view.getUint32(at + 4);
    const offset = Number(view.getBigUint64(at + 8));
    at += HEAD;
    if (length > body.length - at) throw new TransferError('not-understood');
    yield { index, offset, length, bytes: body.subarray(at, at + length) };
    at += length;
  }
}
