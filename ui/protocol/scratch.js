// What has been received of a file or a text, before it is whole.

import { EngineFile, remove } from '../engine/files.js';
import { platform } from '../platform.js';
import { joined } from './bytes.js';

/** Bytes that may wait for the disk. */
const UNWRITTEN = 8 << 20;

/** The scratch paths in use; dispatches “change”. Whoever keeps them can clear up after a crash. */
export const scratchPaths = new (class extends EventTarget {
  /** @type {Set<string>} */
  paths = new Set();

  /** @param {string} path */
  add(path) {
    this.paths.add(path);
    this.dispatchEvent(new Event('change'));
  }

  /** @param {string} path */
  delete(path) {
    this.paths.delete(path);
    this.dispatchEvent(new Event('change'));
  }
})();

/** @param {string} path */
const lastPiece = (path) => path.slice(path.lastIndexOf('/') + 1);

/** One file on its way, or a text. */
export class Scratch {
  #entry;
  /** @type {Promise<{ file: EngineFile, path: string }> | null} */
  #opened = null;
  /** @type {Uint8Array[]} */
  #text = [];
  /** @type {Promise<unknown>} */
  #writes = Promise.resolve();
  #isClosed = false;
  taken = 0;

  /** @param {import('./manifest.js').Entry} entry */
  constructor(entry) {
    this.#entry = entry;
    if (entry.kind === 'file') this.#opened = this.#open();
    this.#opened?.catch(() => {});
  }

  get size() {
    return this.#entry.size;
  }

  /**
   * Takes the next bytes; resolves when they are written.
   * @param {Uint8Array} bytes
   */
  write(bytes) {
    const written = this.#write(this.taken, bytes);
    this.taken += bytes.length;
    this.#writes = Promise.all([this.#writes, written]);
    this.#writes.catch(() => {});
    return written;
  }

  /** Of a text. */
  content() {
    return joined(...this.#text);
  }

  /**
   * Moves the whole file into place.
   * @returns {Promise<string>} where it is now
   */
  async publish() {
    const { file, path } = await /** @type {Promise<{ file: EngineFile, path: string }>} */ (this.#opened);
    await this.#writes;
    await file.flush();
    this.#isClosed = true;
    await file.close();
    const relativePath = this.#entry.path;
    const location = await platform.publishReceivedFile(
      { path, name: lastPiece(relativePath), relativePath });
    scratchPaths.delete(path);
    return location;
  }

  async discard() {
    await this.#writes.catch(() => {});
    const opened = await this.#opened?.catch(() => null);
    if (!opened) return;
    if (!this.#isClosed) await opened.file.close().catch(() => {});
    await remove(opened.path).catch(() => {});
    scratchPaths.delete(opened.path);
  }

  /**
   * @param {number} offset
   * @param {Uint8Array} bytes
   */
  async #write(offset, bytes) {
    if (!this.#opened) {
      this.#text.push(bytes.slice());
    } else if (bytes.length > 0) {
      const { file } = await this.#opened;
      await file.write(offset, bytes);
    }
  }

  async #open() {
    const path = await platform.temporaryReceivePath(lastPiece(this.#entry.path));
    const file = await EngineFile.create(path);
    scratchPaths.add(path);
    return { file, path };
  }
}

/** Lets so many bytes wait for the disk, and throws what a write failed of. */
export class Pace {
  #waiting = 0;
  /** @type {Set<Promise<void>>} */
  #writes = new Set();
  /** @type {any} */
  #failure = null;

  /**
   * @param {number} size
   * @param {Promise<void>} write
   */
  async take(size, write) {
    this.#waiting += size;
    const settled = write.catch((error) => { this.#failure ??= error; }).finally(() => {
      this.#waiting -= size;
      this.#writes.delete(settled);
    });
    this.#writes.add(settled);
    while (this.#waiting > UNWRITTEN) await Promise.race(this.#writes);
    if (this.#failure) throw this.#failure;
  }
}
