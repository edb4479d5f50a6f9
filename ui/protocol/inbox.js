// Puts the content of a transfer where it belongs, file by file. A file is moved into place once it is
// whole and the sender has said that it is as it was offered. What fails concerns one file only, but
// for a full disk.

import { publish, settle } from '../engine/files.js';
import { platform } from '../platform.js';
import { textOf } from './bytes.js';
import { TransferError } from './errors.js';

/** Entries that the host is told of at once. */
const EXPECTED = 500;
/** Files that are put into place together, and how many such groups at once: while one is written to
 *  the disk, another is moved. */
const GROUP = 256;
const GROUPS = 2;
/** Folders that are put into place at once. */
const AT_ONCE = 100;

/** @typedef {import('./manifest.js').Entry} Entry */
/** @typedef {import('./scratch_area.js').TransferScratch} TransferScratch */
/** @typedef {import('./scratch_area.js').Had} Had */
/** @typedef {import('../engine/transfers.js').IncomingPart} IncomingPart */
/** @typedef {{ index: number, code: string, isTold?: boolean }} Failure */
/** A file of which all is there, and where; null for an empty one, which is made in its place.
 *  @typedef {{ index: number, path: string | null, relativePath: string, modified: number }} Whole */

export class Inbox {
  #entries;
  #scratch;
  /** What had arrived before, by entry. */
  #had;
  #expect;
  /** Entries that the host was not told of yet, in order. @type {number[]} */
  #unexpected = [];
  /** Entries that the sender has not spoken of yet. @type {Set<number>} */
  #coming = new Set();
  /** Those that are whole and not empty, texts with their content.
   *  @type {Map<number, Uint8Array | null>} */
  #whole = new Map();
  /** Where the content of entries is on its way. @type {Map<number, string>} */
  #paths = new Map();
  /** @type {Set<Promise<void>>} */
  #finishing = new Set();
  /** What ends the whole transfer. @type {any} */
  #end = null;
  /** @type {Map<number, Failure>} */
  #failures = new Map();
  /** By the first piece of the path. @type {Map<string, string>} */
  #locations = new Map();
  /** @type {string[]} */
  #texts = [];

  /**
   * @param {Entry[]} entries
   * @param {TransferScratch} scratch
   * @param {Had[]} had
   * @param {(parts: IncomingPart[]) => Promise<unknown>} expect tells the host where content goes
   */
  constructor(entries, scratch, had, expect) {
    this.#entries = entries;
    this.#scratch = scratch;
    this.#had = new Map(had.map((one) => [one.index, one]));
    this.#expect = expect;
    for (const [index, { kind }] of entries.entries()) {
      const isInPlace = this.#had.get(index)?.digest === null;
      if (kind === 'directory' || isInPlace) continue;
      this.#coming.add(index);
      if (entries[index].size > 0) this.#unexpected.push(index);
    }
    this.#unexpected.reverse();
  }

  /** Tells the host of the next entries, at least up to one. */
  async expectMore(upTo = -1) {
    const some = [];
    while (
      this.#unexpected.length > 0 &&
      (some.length < EXPECTED || some[some.length - 1] < upTo)
    ) {
      some.push(/** @type {number} */ (this.#unexpected.pop()));
    }
    await this.#expect(await Promise.all(some.map((index) => this.#partOf(index))));
  }

  /**
   * What has come of content.
   * @param {import('../engine/transfers.js').Arrival} arrival
   */
  async take({ whole, texts, failed, wanted }) {
    for (const index of whole) this.#whole.set(index, null);
    for (const [index, bytes] of texts) this.#whole.set(index, bytes);
    for (const [index, details] of failed) this.#fail(index, { details });
    if (this.#end) throw this.#end;
    if (wanted !== undefined) await this.expectMore(wanted);
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
      this.#forget(index);
      this.#failures.set(index, { index, code: String(code), isTold: true });
    }
    const group = [];
    for (const index of this.#coming) {
      if (index > upTo) break;
      const { kind, path: relativePath, size, modified } = this.#entries[index];
      const isWhole = size === 0 || this.#whole.has(index);
      if (!isWhole && !this.#failures.has(index)) throw new TransferError('not-understood');
      if (isWhole && kind === 'file')
        group.push({ index, path: this.#paths.get(index) ?? null, relativePath, modified });
      else if (isWhole) this.#texts.push(textOf(this.#whole.get(index) ?? new Uint8Array(0)));
      this.#forget(index);
      if (group.length === GROUP) await this.#finish(group.splice(0));
    }
    if (group.length > 0) await this.#finish(group);
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
    return {
      locations: [...new Set(this.#locations.values())],
      text: this.#texts.length > 0 ? this.#texts.join('\n\n') : null,
      failures: [...this.#failures.values()],
    };
  }

  /** Waits for what is being put into place. */
  async close() {
    await Promise.all(this.#finishing);
  }

  /**
   * Where an entry's content goes.
   * @param {number} index
   * @returns {Promise<IncomingPart>}
   */
  async #partOf(index) {
    const entry = this.#entries[index];
    const { kind, size } = entry;
    if (kind === 'text') return { entry: index, path: null, offset: 0, size };
    const offset = this.#had.get(index)?.bytes ?? 0;
    const path = await this.#scratch.partFor(entry, offset);
    this.#paths.set(index, path);
    return { entry: index, path, offset, size };
  }

  /** @param {number} index */
  #forget(index) {
    this.#coming.delete(index);
    this.#whole.delete(index);
    this.#paths.delete(index);
  }

  /**
   * Begins to put files into place, and resolves when there is room for more.
   * @param {Whole[]} group
   */
  async #finish(group) {
    const finishing = this.#place(group).finally(() => this.#finishing.delete(finishing));
    this.#finishing.add(finishing);
    while (this.#finishing.size >= GROUPS) await Promise.race(this.#finishing);
  }

  /** @param {Whole[]} group */
  async #place(group) {
    try {
      const written = await this.#settled(group.filter(({ path }) => path !== null));
      const made = group.filter(({ path }) => path === null);
      const settled = [...written, ...made];
      await this.#markWhole(written);
      const places = await publish(settled);
      // What was not moved is found again where it was; what was not made is made.
      await this.#markWhole(
        made.filter((_, at) => typeof places[written.length + at] === 'string'),
      );
      for (const [at, { index }] of settled.entries()) {
        const place = places[at];
        if (typeof place === 'string') this.#located(this.#entries[index], place);
        else this.#fail(index, place);
      }
    } catch (error) {
      for (const { index } of group) this.#fail(index, error);
    }
  }

  /**
   * Those of some files that are on the disk.
   * @param {Whole[]} files
   */
  async #settled(files) {
    if (files.length === 0) return files;
    const failures = await settle(
      files.map(({ path, modified }) => ({ path: /** @type {string} */ (path), modified })),
    );
    for (const [at, { index }] of files.entries()) {
      if (failures[at]) this.#fail(index, failures[at]);
    }
    return files.filter((_, at) => !failures[at]);
  }

  /** @param {Whole[]} files */
  #markWhole(files) {
    return this.#scratch.markWhole(files.map(({ index }) => this.#entries[index]));
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
    const top = path.slice(0, path.indexOf('/'));
    if (path.includes('/') && this.#locations.has(top)) return;
    let place = location;
    for (let rest = path; rest.includes('/'); rest = rest.slice(0, rest.lastIndexOf('/'))) {
      place = folderOf(place);
    }
    this.#locations.set(place === location ? location : top, place);
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
