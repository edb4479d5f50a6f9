// The content of data records: pieces of files, one after the other, in the order of the manifest.
//
//   4 bytes  entry, by its place in the manifest
//   8 bytes  offset in it
//   4 bytes  length, then so many bytes

import { TransferError } from './errors.js';
import { Limit } from './limits.js';
import { RecordBuffer } from './sealed_stream.js';

const HEAD = 16;
/** So many small files in one record at most. */
const MOST = 16;

/** @typedef {{ index: number, offset: number, length: number }} Segment */

/**
 * The entries with content, in pieces that fill records of about the size of a chunk.
 * @param {import('./manifest.js').Entry[]} entries
 * @returns {Generator<Segment[]>}
 */
export function* segmentsOf(entries) {
  /** @type {Segment[]} */
  let record = [];
  let room = Limit.chunk;
  for (const [index, { kind, size }] of entries.entries()) {
    if (kind === 'directory') continue;
    let offset = 0;
    do {
      const length = Math.min(size - offset, room);
      record.push({ index, offset, length });
      offset += length;
      room -= length;
      if (room === 0 || record.length === MOST) {
        yield record;
        record = [];
        room = Limit.chunk;
      }
    } while (offset < size);
  }
  if (record.length > 0) yield record;
}

/**
 * A record of these segments.
 * @param {Segment[]} segments
 * @param {(segment: Segment) => Promise<Uint8Array>} read
 * @returns {Promise<RecordBuffer>}
 */
export async function filledRecord(segments, read) {
  const size = segments.reduce((sum, { length }) => sum + HEAD + length, 0);
  const buffer = new RecordBuffer(size);
  let at = 0;
  await Promise.all(segments.map(async (segment) => {
    const { index, offset, length } = segment;
    buffer.view.setUint32(at, index);
    buffer.view.setBigUint64(at + 4, BigInt(offset));
    buffer.view.setUint32(at + 12, length);
    const target = at + HEAD;
    at = target + length;
    const bytes = await read(segment);
    if (bytes.length !== length) throw new TransferError('changed-file');
    buffer.body.set(bytes, target);
  }));
  return buffer;
}

/**
 * @param {Uint8Array} body of a data record
 * @returns {Generator<Segment & { bytes: Uint8Array }>}
 */
export function* segmentsIn(body) {
  const view = new DataView(body.buffer, body.byteOffset, body.length);
  for (let at = 0; at < body.length;) {
    if (body.length - at < HEAD) throw new TransferError('not-understood');
    const index = view.getUint32(at);
    const offset = Number(view.getBigUint64(at + 4));
    const length = view.getUint32(at + 12);
    at += HEAD;
    if (length > body.length - at) throw new TransferError('not-understood');
    yield { index, offset, length, bytes: body.subarray(at, at + length) };
    at += length;
  }
}
