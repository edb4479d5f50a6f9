// The sending side of a transfer, from its offer to the other side's word that all was saved.

import { Slices } from '../engine/slices.js';
import { jsonBytes, utf8 } from './bytes.js';
import { contentOf, Type } from './conversation.js';
import { contentDigest } from './content_digest.js';
import { TransferError } from './errors.js';
import { beforeLong } from './introduction.js';
import { manifestRecords, totalSize } from './manifest.js';

/** Batches that the host has at once, so that it never waits for the page. */
const IN_FLIGHT = 3;
/** Files in a batch, and bytes of the last of which it ends. */
const BATCH = 512;
const BATCH_BYTES = 16 << 20;

/** @typedef {import('./manifest.js').Entry & { source: string, text?: string }} Outgoing */
/** @typedef {import('./conversation.js').Conversation} Conversation */
/** @typedef {import('../engine/transfers.js').OutgoingPart} OutgoingPart */
/** @typedef {import('./inbox.js').Failure} Failure */
/** Bytes of an entry that the other side has, and their digest; none where it has the whole entry.
 *  @typedef {{ bytes: number, digest?: string }} Had */

/**
 * @typedef {object} Report
 * @property {() => void} onOffered
 * @property {() => void} onAccepted
 * @property {(bytes: number) => void} onProgress content that has arrived, with what had before
 */

/**
 * Offers the entries, and sends what the other side does not have. Answers what failed.
 * @param {Conversation} conversation
 * @param {string} transfer the number by which the other side knows it again
 * @param {AsyncIterable<Outgoing[]>} parts the entries, as they are found
 * @param {Report} report
 * @returns {Promise<Failure[]>}
 */
export async function sendAll(conversation, transfer, parts, report) {
  const { onOffered, onAccepted, onProgress } = report;
  const entries = await offer(conversation, transfer, parts);
  onOffered();
  const had = await beforeLong(acceptance(conversation, entries));
  onAccepted();
  const outcome = received(conversation, entries, onProgress);
  const sending = sendContents(conversation, entries, had);
  sending.catch(() => {});
  outcome.catch(() => {});
  // The other side may end it at any time; then sending is over as well.
  await Promise.race([sending, outcome]);
  const late = await outcome;
  return [...(await sending), ...late];
}

/**
 * @param {Conversation} conversation
 * @param {string} transfer
 * @param {AsyncIterable<Outgoing[]>} parts
 * @returns {Promise<Outgoing[]>} all entries
 */
async function offer(conversation, transfer, parts) {
  /** @type {Outgoing[]} */
  const entries = [];
  for await (const part of parts) {
    entries.push(...part);
    for (const body of manifestRecords(part)) await conversation.send(Type.offer, body);
  }
  const offered = { transfer, entries: entries.length, bytes: totalSize(entries) };
  await conversation.send(Type.offered, jsonBytes(offered));
  return entries;
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
 * Sends content a batch after the other, and after each what of it is not as it was offered.
 * @param {Conversation} conversation
 * @param {Outgoing[]} entries
 * @param {Map<number, Had>} had
 * @returns {Promise<Failure[]>} of all batches
 */
async function sendContents(conversation, entries, had) {
  /** @type {Failure[]} */
  const failures = [];
  /** @type {Promise<void>[]} */
  const sending = [];
  const slices = new Slices();
  for (const batch of batchesOf(entries, await startsOf(entries, had))) {
    if (slices.isOver) await slices.next();
    const sent = sendBatch(conversation, batch).then((failed) => {
      failures.push(...failed);
    });
    sent.catch(() => {}); // rejects once more where it is awaited
    sending.push(sent);
    if (sending.length >= IN_FLIGHT) await sending.shift();
  }
  await Promise.all(sending);
  await conversation.send(Type.sent);
  return failures;
}

/**
 * @param {Conversation} conversation
 * @param {OutgoingPart[]} batch
 * @returns {Promise<Failure[]>}
 */
async function sendBatch(conversation, batch) {
  const failures = (await conversation.sendContent(batch)).map(([index, name]) => ({
    index,
    code: name === 'ESTALE' ? 'changed-file' : 'unreadable',
  }));
  const upTo = batch[batch.length - 1].entry;
  const failed = failures.map(({ index, code }) => [index, code]);
  await conversation.send(Type.checked, jsonBytes({ upTo, failed }));
  return failures;
}

/**
 * What is to be sent, in the order of the manifest: so many files, or bytes, that the other side hears
 * often enough what it may put in place.
 * @param {Outgoing[]} entries
 * @param {Map<number, number>} starts the first offset of those that are not sent from the beginning
 * @returns {Generator<OutgoingPart[]>}
 */
function* batchesOf(entries, starts) {
  /** @type {OutgoingPart[]} */
  let batch = [];
  let bytes = 0;
  for (const [entry, { kind, source, size, modified, text }] of entries.entries()) {
    const offset = starts.get(entry) ?? 0;
    if (kind === 'directory' || offset === Infinity) continue;
    const part = { entry, offset, size, modified };
    batch.push(text === undefined ? { ...part, path: source } : { ...part, bytes: utf8(text) });
    bytes += size - offset;
    if (batch.length < BATCH && bytes < BATCH_BYTES) continue;
    yield batch;
    batch = [];
    bytes = 0;
  }
  if (batch.length > 0) yield batch;
}

/**
 * The first offset to send of the entries of which the other side has something; Infinity for those
 * that are in their places.
 * @param {Outgoing[]} entries
 * @param {Map<number, Had>} had
 * @returns {Promise<Map<number, number>>}
 */
async function startsOf(entries, had) {
  const starts = new Map();
  for (const [index, { bytes, digest }] of had) {
    const { size, source } = entries[index];
    if (digest === undefined && bytes === size) starts.set(index, Infinity);
    const ours = digest ? await contentDigest(source, bytes).catch(() => null) : null;
    if (ours !== null && ours === digest) starts.set(index, bytes);
  }
  return starts;
}

/** @param {unknown} list @returns {any[][]} */
function listIn(list) {
  if (!Array.isArray(list) || !list.every(Array.isArray)) throw new TransferError('not-understood');
  return list;
}
