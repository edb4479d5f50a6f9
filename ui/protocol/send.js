// The sending side of a transfer, from its offer to the other side's word that all was saved.

import { jsonBytes } from './bytes.js';
import { contentOf, Type } from './conversation.js';
import { contentDigest } from './content_digest.js';
import { TransferError } from './errors.js';
import { beforeLong } from './introduction.js';
import { manifestRecords, totalSize } from './manifest.js';
import { contentRecord, segmentsOf } from './segments.js';
import { Sources } from './sources.js';

/** Records that are read, sealed and written at once. */
const IN_FLIGHT = 5;

/** @typedef {import('./manifest.js').Entry & { source: string, text?: string }} Outgoing */
/** @typedef {import('./conversation.js').Conversation} Conversation */
/** @typedef {import('./inbox.js').Failure} Failure */
/** Bytes of an entry that the other side has, and their digest; none where it has the whole entry.
 *  @typedef {{ bytes: number, digest?: string }} Had */

/**
 * @typedef {object} Report
 * @property {() => void} onAccepted
 * @property {(bytes: number) => void} onProgress content that has arrived, with what had before
 */

/**
 * Offers the entries, and sends what the other side does not have. Answers what failed.
 * @param {Conversation} conversation
 * @param {string} transfer the number by which the other side knows it again
 * @param {Outgoing[]} entries
 * @param {Report} report
 * @returns {Promise<Failure[]>}
 */
export async function sendAll(conversation, transfer, entries, { onAccepted, onProgress }) {
  for (const body of manifestRecords(entries)) await conversation.send(Type.offer, body);
  const offered = { transfer, entries: entries.length, bytes: totalSize(entries) };
  await conversation.send(Type.offered, jsonBytes(offered));
  const had = await beforeLong(acceptance(conversation, entries));
  onAccepted();
  const sources = new Sources(entries);
  const outcome = received(conversation, entries, onProgress);
  try {
    // The other side may end it at any time; then writing is over as well.
    await Promise.race([sendContents(conversation, entries, had, sources), outcome]);
    return [...sources.failures, ...(await outcome)];
  } finally {
    outcome.catch(() => {});
    await sources.closeAll();
  }
}

/**
 * What the other side has, once it accepts.
 * @param {Conversation} conversation
 * @param {Outgoing[]} entries
 * @returns {Promise<Map<number, Had>>}
 */
async function acceptance(conversation, entries) {
  const had = new Map();
  for (;;) {
    const { type, body } = await conversation.next();
    if (type === Type.accepted) return had;
    if (type !== Type.have) throw new TransferError('not-understood');
    for (const [index, bytes, digest] of listIn(contentOf(body).have)) {
      const isPossible = Number.isInteger(bytes) && bytes >= 0 && bytes <= entries[index]?.size;
      if (!isPossible) throw new TransferError('not-understood');
      had.set(index, { bytes, digest });
    }
  }
}

/**
 * What did not arrive, once the other side says that it has saved the rest.
 * @param {Conversation} conversation
 * @param {Outgoing[]} entries
 * @param {(bytes: number) => void} onProgress
 * @returns {Promise<Failure[]>}
 */
async function received(conversation, entries, onProgress) {
  /** @type {Failure[]} */
  const failures = [];
  for (;;) {
    const { type, body } = await conversation.next();
    if (type === Type.received) return failures;
    const said = contentOf(body);
    if (type === Type.taken && Number.isSafeInteger(said.bytes)) {
      onProgress(said.bytes);
    } else if (type === Type.checked) {
      for (const [index, code] of listIn(said.failed)) {
        if (!entries[index]) throw new TransferError('not-understood');
        failures.push({ index, code: String(code), isTold: true });
      }
    } else {
      throw new TransferError('not-understood');
    }
  }
}

/**
 * @param {Conversation} conversation
 * @param {Outgoing[]} entries
 * @param {Map<number, Had>} had
 * @param {Sources} sources
 */
async function sendContents(conversation, entries, had, sources) {
  /** @type {{ segments: import('./segments.js').Segment[], bytes: Promise<(Uint8Array | null)[]> }[]} */
  const reading = [];
  /** @type {Promise<void>[]} */
  const writing = [];
  let reported = 0;
  const sendFirst = async () => {
    const { segments, bytes } = /** @type {typeof reading[0]} */ (reading.shift());
    const read = await bytes;
    const filled = segments.flatMap((segment, at) => {
      const content = read[at];
      return content && !sources.hasFailed(segment.index) ? [{ ...segment, bytes: content }] : [];
    });
    if (filled.length > 0) {
      writing.push(track(conversation.send(Type.content, contentRecord(filled))));
    }
    const last = segments[segments.length - 1];
    const isWhole = last.offset + last.length === entries[last.index].size;
    const failed = sources.failures.slice(reported).map(({ index, code }) => [index, code]);
    reported = sources.failures.length;
    // Whatever comes before the last segment's entry is through.
    const upTo = isWhole ? last.index : last.index - 1;
    writing.push(track(conversation.send(Type.checked, jsonBytes({ upTo, failed }))));
    while (writing.length >= 2 * IN_FLIGHT) await writing.shift();
  };
  const starts = await startsOf(entries, had);
  for (const segments of segmentsOf(entries, starts)) {
    const bytes = Promise.all(segments.map((segment) => sources.read(segment)));
    reading.push({ segments, bytes });
    if (reading.length >= IN_FLIGHT) await sendFirst();
  }
  while (reading.length > 0) await sendFirst();
  await Promise.all(writing);
  await conversation.send(Type.sent);
}

/**
 * Where to begin with each entry that is to be sent.
 * @param {Outgoing[]} entries
 * @param {Map<number, Had>} had
 * @returns {Promise<Map<number, number>>}
 */
async function startsOf(entries, had) {
  const starts = new Map();
  for (const [index, { kind, size, source }] of entries.entries()) {
    const known = had.get(index);
    const isInPlace = known && known.digest === undefined && known.bytes === size;
    if (kind === 'directory' || isInPlace) continue;
    const ours = known?.digest ? await contentDigest(source, known.bytes).catch(() => null) : null;
    starts.set(index, known && ours !== null && ours === known.digest ? known.bytes : 0);
  }
  return starts;
}

/** @param {unknown} list @returns {any[][]} */
function listIn(list) {
  if (!Array.isArray(list) || !list.every(Array.isArray)) throw new TransferError('not-understood');
  return list;
}

/** Whoever waits for it hears of its failure. @param {Promise<void>} write */
function track(write) {
  write.catch(() => {});
  return write;
}
