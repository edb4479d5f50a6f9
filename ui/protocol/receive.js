// The receiving side of a transfer, from the offer to the word that all was saved. Every file is
// written to a scratch path and moved into place once it is whole, so that nothing half is ever
// seen under a file's name.

import { platform } from '../platform.js';
import { joined, textOf } from './bytes.js';
import { Type } from './conversation.js';
import { TransferError } from './errors.js';
import { Limit } from './limits.js';
import { decodeManifest } from './manifest.js';
import { Pace, Scratch } from './scratch.js';
import { segmentsIn } from './segments.js';

/** Files that are put into place at once. */
const FINISHING = 16;

/** @typedef {import('./manifest.js').Entry} Entry */

/**
 * @param {import('./conversation.js').Conversation} conversation
 * @returns {Promise<Entry[]>}
 */
export async function receiveOffer(conversation) {
  const parts = [];
  let size = 0;
  for (;;) {
    const { type, body } = await conversation.next();
    if (type === Type.offered) return decodeManifest(joined(...parts));
    size += body.length;
    if (type !== Type.offer || size > Limit.manifestBytes) throw new TransferError('not-understood');
    parts.push(body.slice());
  }
}

/**
 * Accepts the offer and receives it.
 * @param {import('./conversation.js').Conversation} conversation
 * @param {Entry[]} entries
 * @param {Promise<import('./conversation.js').Received>} first the record after the offer
 * @param {(bytes: number) => void} onProgress bytes received since the last report
 * @returns {Promise<{ locations: string[], text: string | null }>} the top-level places, and a text
 */
export async function receiveAll(conversation, entries, first, onProgress) {
  const inbox = new Inbox(entries);
  try {
    await conversation.send(Type.accepted);
    for (let next = first; ; next = conversation.next()) {
      const { type, body } = await next;
      if (type === Type.sent) break;
      if (type !== Type.data) throw new TransferError('not-understood');
      for (const segment of segmentsIn(body)) await inbox.take(segment);
      onProgress(body.length);
    }
    const result = await inbox.finish();
    await conversation.send(Type.received);
    return result;
  } catch (error) {
    await inbox.discard();
    throw TransferError.of(error, 'not-saved');
  }
}

/** Puts what arrives where it belongs. */
class Inbox {
  #entries;
  /** Entries with content, by their places in the manifest, that have not begun. */
  #coming;
  #index = -1;
  /** @type {Scratch | null} */
  #current = null;
  /** @type {Set<Scratch>} */
  #scratches = new Set();
  /** @type {Set<Promise<void>>} */
  #finishing = new Set();
  /** @type {any} */
  #failure = null;
  /** @type {Map<string, string>} by the first piece of the path */
  #locations = new Map();
  /** @type {string[]} */
  #texts = [];
  #pace = new Pace();

  /** @param {Entry[]} entries */
  constructor(entries) {
    this.#entries = entries;
    this.#coming = [...entries.keys()].filter((index) => entries[index].kind !== 'directory').reverse();
  }

  /** @param {import('./segments.js').Segment & { bytes: Uint8Array }} segment */
  async take({ index, offset, bytes }) {
    if (this.#failure) throw this.#failure;
    if (!this.#current) this.#begin(index);
    const current = /** @type {Scratch} */ (this.#current);
    if (index !== this.#index || offset !== current.taken || offset + bytes.length > current.size) {
      throw new TransferError('not-understood');
    }
    await this.#pace.take(bytes.length, current.write(bytes));
    if (current.taken < current.size) return;
    this.#current = null;
    this.#finish(this.#entries[index], current);
    while (this.#finishing.size >= FINISHING) await Promise.race(this.#finishing);
  }

  /** Everything that was offered has to be there. */
  async finish() {
    if (this.#current || this.#coming.length > 0) throw new TransferError('not-understood');
    await Promise.all(this.#finishing);
    if (this.#failure) throw this.#failure;
    await this.#createDirectories();
    const text = this.#texts.length > 0 ? this.#texts.join('\n\n') : null;
    return { locations: [...this.#locations.values()], text };
  }

  async discard() {
    await Promise.all(this.#finishing);
    await Promise.all([...this.#scratches].map((scratch) => scratch.discard()));
  }

  /** @param {number} index */
  #begin(index) {
    if (index !== this.#coming.pop()) throw new TransferError('not-understood');
    this.#index = index;
    this.#current = new Scratch(this.#entries[index]);
    this.#scratches.add(this.#current);
  }

  /**
   * @param {Entry} entry
   * @param {Scratch} scratch
   */
  #finish(entry, scratch) {
    const finishing = this.#place(entry, scratch).catch((error) => {
      this.#failure ??= error;
    }).finally(() => this.#finishing.delete(finishing));
    this.#finishing.add(finishing);
  }

  /**
   * @param {Entry} entry
   * @param {Scratch} scratch
   */
  async #place({ kind, path }, scratch) {
    if (kind === 'text') {
      this.#texts.push(textOf(scratch.content()));
    } else {
      const location = await scratch.publish();
      if (!path.includes('/')) this.#locations.set(location, location);
    }
    this.#scratches.delete(scratch);
  }

  async #createDirectories() {
    const paths = this.#entries.filter(({ kind }) => kind === 'directory').map(({ path }) => path);
    for (let at = 0; at < paths.length; at += FINISHING) {
      await Promise.all(paths.slice(at, at + FINISHING).map(async (relativePath) => {
        const location = await platform.publishReceivedDirectory(relativePath);
        if (!relativePath.includes('/')) this.#locations.set(location, location);
      }));
    }
  }
}
