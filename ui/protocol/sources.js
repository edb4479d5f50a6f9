// The files that are being read: opened when they are first needed, closed after their last byte. What
// cannot be read, or is no longer as it was offered, is that file's failure alone.

import { EngineFile, stat } from '../engine/files.js';
import { utf8 } from './bytes.js';
import { ConcurrencyLimit } from './concurrency_limit.js';

/** Files that all transfers read at once. */
const openFiles = new ConcurrencyLimit(96);

/** @typedef {import('./send.js').Outgoing} Outgoing */

export class Sources {
  #entries;
  /** @type {Map<number, Promise<EngineFile>>} */
  #open = new Map();
  /** @type {Map<number, string>} */
  #failed = new Map();

  /** @param {Outgoing[]} entries */
  constructor(entries) {
    this.#entries = entries;
  }

  /** In the order in which they were found. @returns {import('./inbox.js').Failure[]} */
  get failures() {
    return [...this.#failed].map(([index, code]) => ({ index, code }));
  }

  /** @param {number} index */
  hasFailed(index) {
    return this.#failed.has(index);
  }

  /**
   * Null where it failed.
   * @param {import('./segments.js').Segment} segment
   * @returns {Promise<Uint8Array | null>}
   */
  async read({ index, offset, length }) {
    const { source, size, text } = this.#entries[index];
    if (text !== undefined) return utf8(text).subarray(offset, offset + length);
    if (this.#failed.has(index)) return null;
    try {
      const bytes = length > 0 ? await this.#readFile(index, offset, length) : new Uint8Array(0);
      const isLast = offset + length === size;
      if (isLast) await this.#close(index);
      if (bytes.length < length || (isLast && !(await this.#isAsOffered(index, source)))) {
        return await this.#fail(index, 'changed-file');
      }
      return bytes;
    } catch {
      return this.#fail(index, 'unreadable');
    }
  }

  async closeAll() {
    await Promise.all([...this.#open.keys()].map((index) => this.#close(index)));
  }

  /**
   * @param {number} index
   * @param {number} offset
   * @param {number} length
   */
  async #readFile(index, offset, length) {
    const { source } = this.#entries[index];
    const opened = this.#open.get(index) ?? openFiles.acquire().then(() => EngineFile.open(source));
    this.#open.set(index, opened);
    return (await opened).read(offset, length);
  }

  /**
   * Looked at after the last byte was read, so it tells of changes before and while it was.
   * @param {number} index
   * @param {string} source
   */
  async #isAsOffered(index, source) {
    const { size, modified } = this.#entries[index];
    const now = await stat(source);
    return now?.kind === 'file' && now.size === size && now.modified === modified;
  }

  /**
   * @param {number} index
   * @param {string} code
   */
  async #fail(index, code) {
    this.#failed.set(index, this.#failed.get(index) ?? code);
    await this.#close(index);
    return null;
  }

  /** @param {number} index */
  async #close(index) {
    const opened = this.#open.get(index);
    if (!opened) return;
    this.#open.delete(index);
    await opened.then((file) => file.close()).catch(() => {});
    openFiles.release();
  }
}
