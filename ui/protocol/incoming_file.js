// One file on its way: written to the scratch area, and moved into place once it is whole.

import { platform } from '../platform.js';

/** @typedef {import('./manifest.js').Entry} Entry */
/** @typedef {import('./scratch_area.js').TransferScratch} TransferScratch */

/** @param {string} path */
const lastPiece = (path) => path.slice(path.lastIndexOf('/') + 1);

export class IncomingFile {
  #scratch;
  #opened;
  /** @type {Promise<unknown>} */
  #writes = Promise.resolve();
  #isClosed = false;

  /**
   * @param {TransferScratch} scratch
   * @param {Entry} entry
   * @param {number} offset of the first byte that comes; the ones before are there
   */
  constructor(scratch, entry, offset) {
    this.#scratch = scratch;
    this.entry = entry;
    this.taken = offset;
    this.#opened = scratch.openPart(entry, offset);
    this.#opened.catch(() => {});
  }

  /**
   * Takes the next bytes; resolves when they are written.
   * @param {Uint8Array} bytes
   * @returns {Promise<void>}
   */
  write(bytes) {
    const offset = this.taken;
    this.taken += bytes.length;
    const written = this.#opened.then(({ file }) =>
      bytes.length > 0 ? file.write(offset, bytes) : undefined,
    );
    this.#writes = Promise.all([this.#writes, written]);
    this.#writes.catch(() => {});
    return written;
  }

  /**
   * Moves the whole file into place.
   * @returns {Promise<string>} where it is now
   */
  async place() {
    const { file, path } = await this.#opened;
    await this.#writes;
    await file.settle(this.entry.modified);
    this.#isClosed = true;
    await file.close();
    await this.#scratch.markWhole(this.entry);
    const relativePath = this.entry.path;
    return platform.publishReceivedFile({ path, name: lastPiece(relativePath), relativePath });
  }

  /** Leaves what has arrived where it is. */
  async close() {
    await this.#writes.catch(() => {});
    const opened = await this.#opened.catch(() => null);
    if (!opened || this.#isClosed) return;
    this.#isClosed = true;
    await opened.file.close().catch(() => {});
  }
}
