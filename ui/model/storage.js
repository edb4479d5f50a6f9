// The model's documents: JSON files in the application's own folder, each replaced as a whole.

import { EngineFile, replace, stat } from '../engine/files.js';
import { jsonBytes, joined, textOf } from '../protocol/bytes.js';

const CHUNK = 8 << 20;

export class Storage {
  #folder;
  /** @type {Map<string, unknown>} what waits to be written, by document */
  #waiting = new Map();
  #writing = Promise.resolve();

  /** @param {string} folder */
  constructor(folder) {
    this.#folder = folder;
  }

  /**
   * The document, or null where there is none that can be read.
   * @param {string} name
   * @returns {Promise<any>}
   */
  async load(name) {
    const path = this.#pathOf(name);
    const found = await stat(path).catch(() => null);
    if (found?.kind !== 'file') return null;
    const file = await EngineFile.open(path);
    try {
      const parts = [];
      for (let at = 0; at < found.size; at += CHUNK) parts.push(await file.read(at, CHUNK));
      return JSON.parse(textOf(joined(...parts)));
    } catch {
      return null;
    } finally {
      await file.close();
    }
  }

  /**
   * Writes the document; of several that come while one is written, the last.
   * @param {string} name
   * @param {unknown} value
   * @returns {Promise<void>} when it, or a later one, is on the disk
   */
  save(name, value) {
    this.#waiting.set(name, value);
    this.#writing = this.#writing.catch(() => {}).then(() => this.#write(name));
    return this.#writing;
  }

  /** @param {string} name */
  async #write(name) {
    if (!this.#waiting.has(name)) return;
    const value = this.#waiting.get(name);
    this.#waiting.delete(name);
    await replace(this.#pathOf(name), jsonBytes(value));
  }

  /** @param {string} name */
  #pathOf(name) {
    return `${this.#folder}/${name}.json`;
  }
}
