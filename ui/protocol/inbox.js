// Puts the content of a transfer where it belongs, file by file. A file is moved into place once it is
// whole and the sender has said that it is as it was offered. What fails concerns one file only, but
// for a full disk.

import { sync } from '../engine/files.js';
import { platform } from '../platform.js';
import { joined, textOf } from './bytes.js';
import { TransferError } from './errors.js';
import { IncomingFile } from './incoming_file.js';
import { Pace } from './pace.js';

/** Files and folders that are put into place at once. */
const AT_ONCE = 16;

/** @typedef {import('./manifest.js').Entry} Entry */
/** @typedef {import('./scratch_area.js').TransferScratch} TransferScratch */
/** @typedef {import('./scratch_area.js').Had} Had */
/** @typedef {{ index: number, code: string, isTold?: boolean }} Failure */
/** A text as it arrives. @typedef {{ taken: number, pieces: Uint8Array[] }} IncomingText */

export class Inbox {
  #entries;
  #scratch;
  /** What had arrived before, by entry. */
  #had;
  /** Entries whose content is still to come, and what of them has begun.
   *  @type {Map<number, IncomingFile | IncomingText | null>} */
  #coming = new Map();
  #last = -1;
  /** @type {Set<Promise<void>>} */
  #finishing = new Set();
  /** What ends the whole transfer. @type {any} */
  #end = null;
  /** @type {Map<number, Failure>} */
  #failures = new Map();
  /** By the first piece of the path. @type {Map<string, string>} */
  #locations = new Map();
  /** @type {Set<string>} */
  #folders = new Set();
  /** @type {string[]} */
  #texts = [];
  #pace = new Pace();

  /**
   * @param {Entry[]} entries
   * @param {TransferScratch} scratch
   * @param {Had[]} had
   */
  constructor(entries, scratch, had) {
    this.#entries = entries;
    this.#scratch = scratch;
    this.#had = new Map(had.map((one) => [one.index, one]));
    for (const [index, { kind }] of entries.entries()) {
      const isInPlace = this.#had.get(index)?.digest === null;
      if (kind !== 'directory' && !isInPlace) this.#coming.set(index, null);
    }
  }

  /** @param {import('./segments.js').FilledSegment} segment */
  async take({ index, offset, bytes }) {
    if (this.#end) throw this.#end;
    const coming = this.#coming.get(index) ?? this.#begin(index, offset);
    if (offset !== coming.taken || offset + bytes.length > this.#entries[index].size) {
      throw new TransferError('not-understood');
    }
    if (coming instanceof IncomingFile) {
      const write = coming.write(bytes);
      write.catch((error) => this.#fail(index, error));
      await this.#pace.take(bytes.length, write);
    } else {
      coming.pieces.push(bytes.slice());
      coming.taken += bytes.length;
    }
  }

  /**
   * The sender has looked at what it sent up to an entry.
   * @param {Record<string, any>} said
   */
  async check({ upTo, failed }) {
    if (!Number.isInteger(upTo) || !Array.isArray(failed))
      throw new TransferError('not-understood');
    for (const one of failed) {
      const [index, code] = Array.isArray(one) ? one : [];
      if (!this.#coming.has(index)) throw new TransferError('not-understood');
      this.#drop(index);
      this.#failures.set(index, { index, code: String(code), isTold: true });
    }
    for (const [index, coming] of this.#coming) {
      if (index > upTo) break;
      if (coming?.taken !== this.#entries[index].size) throw new TransferError('not-understood');
      this.#coming.delete(index);
      this.#finish(index, coming);
      while (this.#finishing.size >= AT_ONCE) await Promise.race(this.#finishing);
    }
  }

  /**
   * All has to be there, or to have failed; then it is on the disk.
   * @returns {Promise<{ locations: string[], text: string | null, failures: Failure[] }>}
   */
  async finish() {
    if (this.#coming.size > 0) throw new TransferError('not-understood');
    await Promise.all(this.#finishing);
    if (this.#end) throw this.#end;
    await this.#createDirectories();
    await this.#locateEarlier();
    await atOnce([...this.#folders], (folder) => sync(folder).catch(() => {}));
    return {
      locations: [...new Set(this.#locations.values())],
      text: this.#texts.length > 0 ? this.#texts.join('\n\n') : null,
      failures: [...this.#failures.values()],
    };
  }

  /** Closes what is open. */
  async close() {
    await Promise.all(this.#finishing);
    await Promise.all(
      [...this.#coming.values()].map((one) => (one instanceof IncomingFile ? one.close() : null)),
    );
  }

  /**
   * @param {number} index
   * @param {number} offset
   */
  #begin(index, offset) {
    const isNext = index > this.#last && this.#coming.has(index);
    const isHad = offset > 0 && offset === this.#had.get(index)?.bytes;
    if (!isNext || (offset !== 0 && !isHad)) throw new TransferError('not-understood');
    this.#last = index;
    const entry = this.#entries[index];
    const coming =
      entry.kind === 'text'
        ? { taken: 0, pieces: [] }
        : new IncomingFile(this.#scratch, entry, offset);
    this.#coming.set(index, coming);
    return coming;
  }

  /**
   * @param {number} index
   * @param {IncomingFile | IncomingText} coming
   */
  #finish(index, coming) {
    const finishing = this.#place(index, coming)
      .catch((error) => this.#fail(index, error))
      .finally(() => this.#finishing.delete(finishing));
    this.#finishing.add(finishing);
  }

  /**
   * @param {number} index
   * @param {IncomingFile | IncomingText} coming
   */
  async #place(index, coming) {
    if (coming instanceof IncomingFile) this.#located(this.#entries[index], await coming.place());
    else this.#texts.push(textOf(joined(...coming.pieces)));
  }

  /** @param {number} index */
  #drop(index) {
    const coming = this.#coming.get(index);
    this.#coming.delete(index);
    if (coming instanceof IncomingFile) coming.close();
  }

  /**
   * @param {number} index
   * @param {any} error
   */
  #fail(index, error) {
    const reason = TransferError.of(error, 'not-saved');
    if (reason.code === 'disk-full') this.#end ??= reason;
    this.#failures.set(index, { index, code: reason.code });
  }

  /**
   * @param {Entry} entry
   * @param {string} location
   */
  #located({ path }, location) {
    let place = location;
    for (let rest = path; rest.includes('/'); rest = rest.slice(0, rest.lastIndexOf('/'))) {
      place = folderOf(place);
      this.#folders.add(place);
    }
    this.#folders.add(folderOf(place));
    const isTop = place === location;
    this.#locations.set(isTop ? location : path.slice(0, path.indexOf('/')), place);
  }

  async #createDirectories() {
    const indexes = [...this.#entries.keys()];
    const folders = indexes.filter((index) => this.#entries[index].kind === 'directory');
    await atOnce(folders, async (index) => {
      const entry = this.#entries[index];
      try {
        this.#located(entry, await platform.publishReceivedDirectory(entry.path));
      } catch (error) {
        this.#fail(index, error);
      }
    });
  }

  /** Where files are that an earlier connection brought. */
  async #locateEarlier() {
    const earlier = [...this.#had.values()].filter(({ digest }) => digest === null);
    const names = earlier.map(({ index }) => this.#entries[index].path);
    const top = names.filter((name) => !name.includes('/'));
    if (top.length === 0) return;
    for (const { location } of await platform.locateReceivedFiles(top).catch(() => [])) {
      this.#locations.set(location, location);
    }
  }
}

/** @param {string} path */
const folderOf = (path) => path.slice(0, path.lastIndexOf('/'));

/**
 * @template T
 * @param {T[]} all
 * @param {(one: T) => Promise<unknown>} work
 */
async function atOnce(all, work) {
  for (let at = 0; at < all.length; at += AT_ONCE) {
    await Promise.all(all.slice(at, at + AT_ONCE).map(work));
  }
}
