// The sending side of a transfer, from its offer to the other side's word that all was saved.

import { EngineFile } from '../engine/files.js';
import { utf8 } from './bytes.js';
import { Type } from './conversation.js';
import { TransferError } from './errors.js';
import { beforeLong } from './introduction.js';
import { Limit } from './limits.js';
import { encodeManifest } from './manifest.js';
import { filledRecord, segmentsOf } from './segments.js';
import { Slots } from './slots.js';

/** Records that are read, sealed and written at once. */
const IN_FLIGHT = 5;
/** Files that all transfers read at once. */
const openFiles = new Slots(96);

/** @typedef {import('./manifest.js').Entry & { source: string, text?: string }} Outgoing */

/**
 * @param {import('./conversation.js').Conversation} conversation
 * @param {Outgoing[]} entries
 * @param {{ onAccepted: () => void, onProgress: (bytes: number) => void }} report bytes handed over
 *     since the last report
 */
export async function sendAll(conversation, entries, { onAccepted, onProgress }) {
  const manifest = encodeManifest(entries);
  for (let at = 0; at < manifest.length; at += Limit.chunk) {
    await conversation.send(Type.offer, manifest.subarray(at, at + Limit.chunk));
  }
  await conversation.send(Type.offered);
  await beforeLong(conversation.expect(Type.accepted));
  onAccepted();
  const received = conversation.expect(Type.received);
  const sources = new Sources(entries);
  try {
    // The other side may end it at any time; then writing is over as well.
    await Promise.race([sendContents(conversation, entries, sources, onProgress), received]);
    await received;
  } finally {
    received.catch(() => {});
    await sources.closeAll();
  }
}

/**
 * @param {import('./conversation.js').Conversation} conversation
 * @param {Outgoing[]} entries
 * @param {Sources} sources
 * @param {(bytes: number) => void} onProgress
 */
async function sendContents(conversation, entries, sources, onProgress) {
  /** @type {Promise<import('./sealed_stream.js').RecordBuffer>[]} */
  const filling = [];
  /** @type {Promise<void>[]} */
  const writing = [];
  const sendFirst = async () => {
    const record = /** @type {import('./sealed_stream.js').RecordBuffer} */ (await filling.shift());
    const write = conversation.send(Type.data, record).then(() => onProgress(record.body.length));
    write.catch(() => {});
    writing.push(write);
    if (writing.length >= IN_FLIGHT) await writing.shift();
  };
  for (const segments of segmentsOf(entries)) {
    const filled = filledRecord(segments, (segment) => sources.read(segment));
    filled.catch(() => {});
    filling.push(filled);
    if (filling.length >= IN_FLIGHT) await sendFirst();
  }
  while (filling.length > 0) await sendFirst();
  await Promise.all(writing);
  await conversation.send(Type.sent);
}

/** The files that are being read: opened when they are first needed, closed after their last byte. */
class Sources {
  #entries;
  /** @type {Map<number, Promise<EngineFile>>} */
  #open = new Map();

  /** @param {Outgoing[]} entries */
  constructor(entries) {
    this.#entries = entries;
  }

  /**
   * @param {import('./segments.js').Segment} segment
   * @returns {Promise<Uint8Array>}
   */
  async read({ index, offset, length }) {
    const { source, size, text } = this.#entries[index];
    if (text !== undefined) return utf8(text).subarray(offset, offset + length);
    try {
      if (size === 0) return new Uint8Array(0);
      const opened = this.#open.get(index) ?? openFiles.take().then(() => EngineFile.open(source));
      this.#open.set(index, opened);
      const bytes = await (await opened).read(offset, length);
      if (offset + length === size) await this.#close(index);
      return bytes;
    } catch (error) {
      throw TransferError.of(error, 'unreadable');
    }
  }

  async closeAll() {
    await Promise.all([...this.#open.keys()].map((index) => this.#close(index)));
  }

  /** @param {number} index */
  async #close(index) {
    const opened = this.#open.get(index);
    if (!opened) return;
    this.#open.delete(index);
    await opened.then((file) => file.close()).catch(() => {});
    openFiles.give();
  }
}
