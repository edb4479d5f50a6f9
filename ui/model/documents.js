// The model's documents: JSON files in the application's own folder, each replaced as a whole.
//
// A document is {version, content}. What it holds is checked when it is read: entries that do not fit
// are left out and logged. A document that cannot be read as a whole is moved to another name, never
// overwritten, and counts as damaged.

import { logWarning } from '../engine/application.js';
import { list, move, remove, replace } from '../engine/files.js';
import { Slices } from '../engine/slices.js';
import { joined, jsonBytes, textOf, utf8 } from '../protocol/bytes.js';
import { words } from '../text/words.js';
import { readWhole } from './whole_file.js';

const VERSION = 1;
const LARGEST = 64 << 20;
/** Entries of a list that are made JSON at once. */
const PART = 500;

/** What `replace` leaves beside a document when the program is killed while it writes. */
const TEMPORARY = /^\.[a-z0-9-]+\.json\.[0-9A-Fa-f-]{36}$/;

/** What is written of a document that is removed. */
const REMOVED = Symbol('removed');

/** What is written of a document that gets the file of another one. */
class Taken {
  /**
   * @param {unknown} content
   * @param {string} from
   */
  constructor(content, from) {
    this.content = content;
    this.from = from;
  }
}

export class Documents {
  #folder;
  #missing;
  /** @type {Map<string, unknown>} what waits to be written, by document */
  #waiting = new Map();
  /** What was written last, by document. @type {Map<string, unknown>} */
  #written = new Map();
  #writing = Promise.resolve();
  /** @type {Map<string, string | null>} */
  #damaged = new Map();

  /** @param {string | Error} folder or why there is none: then there are no documents, and saving
   *  does nothing */
  constructor(folder) {
    this.#folder = folder instanceof Error ? '' : folder;
    this.#missing = folder instanceof Error ? folder : null;
  }

  /** Why nothing can be kept; null where it can. */
  get missing() {
    return this.#missing;
  }

  /** The damaged documents, each with the file name that it has now; null where it could not be moved.
   *  @type {ReadonlyMap<string, string | null>} */
  get damaged() {
    return this.#damaged;
  }

  /**
   * The content of a document, or null where there is none or it is damaged. Never throws.
   * @template T
   * @param {string} name
   * @param {(content: any) => T} check returns what fits; throws where nothing does
   * @returns {Promise<T | null>}
   */
  async load(name, check) {
    if (this.#missing) return null;
    try {
      const bytes = await readWhole(this.#pathOf(name), LARGEST);
      if (!bytes) return null;
      const { version, content } = JSON.parse(textOf(bytes));
      if (version !== VERSION) throw new TypeError(`its version is ${version}, not ${VERSION}`);
      return check(content);
    } catch (error) {
      await this.#setAside(name);
      const place = this.#damaged.get(name);
      logWarning(`${name}.json cannot be read (${error}); set aside: ${place ?? 'no'}`);
      return null;
    }
  }

  /**
   * Writes the document; of several that come while one is written, the last. A damaged document that
   * could not be moved is not overwritten: then it rejects.
   * @param {string} name
   * @param {unknown} content
   * @returns {Promise<void>} when it, or a later one, is on the disk
   */
  save(name, content) {
    if (this.#missing) return Promise.resolve();
    if (this.#damaged.get(name) === null) {
      return Promise.reject(new Error(words('damage.inTheWay', { name: `${name}.json` })));
    }
    this.#waiting.set(name, content);
    this.#writing = this.#writing.catch(() => {}).then(() => this.#write(name));
    return this.#writing;
  }

  /**
   * Writes the document, by giving it the file of another one where that holds this very content; the
   * other one has to be saved anew.
   * @param {string} name
   * @param {unknown} content
   * @param {string} from
   * @returns {Promise<void>}
   */
  saveTaking(name, content, from) {
    return this.save(name, new Taken(content, from));
  }

  /**
   * Removes the document, after what was saved before.
   * @param {string} name
   * @returns {Promise<void>}
   */
  remove(name) {
    return this.save(name, REMOVED);
  }

  /**
   * Removes what interrupted writes left.
   * @param {(name: string) => boolean} [isUnneeded] whether a document is to go as well
   */
  async sweep(isUnneeded = () => false) {
    if (this.#missing) return;
    const names = await list(this.#folder).catch(() => []);
    const left = names.filter(
      (name) =>
        TEMPORARY.test(name) ||
        (name.endsWith('.json') && isUnneeded(name.slice(0, -'.json'.length))),
    );
    await Promise.all(left.map((name) => remove(`${this.#folder}/${name}`).catch(() => {})));
  }

  /** @param {string} name */
  async #write(name) {
    if (!this.#waiting.has(name)) return;
    const content = this.#waiting.get(name);
    this.#waiting.delete(name);
    if (content instanceof Taken) return this.#take(name, content);
    this.#written.delete(name);
    if (content === REMOVED) return remove(this.#pathOf(name));
    await replace(this.#pathOf(name), await bytesOf(content));
    this.#written.set(name, content);
  }

  /**
   * @param {string} name
   * @param {Taken} taken
   */
  async #take(name, { content, from }) {
    const isThere = this.#written.get(from) === content;
    this.#written.delete(from);
    const isMoved =
      isThere &&
      (await move(this.#pathOf(from), this.#pathOf(name)).then(
        () => true,
        () => false,
      ));
    if (!isMoved) await replace(this.#pathOf(name), await bytesOf(content));
  }

  /** @param {string} name */
  async #setAside(name) {
    const time = new Date().toISOString().replace(/[:.]/g, '-');
    const place = `${name}.damaged-${time}.json`;
    const isMoved = await move(this.#pathOf(name), `${this.#folder}/${place}`).then(
      () => true,
      () => false,
    );
    this.#damaged.set(name, isMoved ? place : null);
  }

  /** @param {string} name */
  #pathOf(name) {
    return `${this.#folder}/${name}.json`;
  }
}

/**
 * A document's bytes; those of a long list are made in slices.
 * @param {unknown} content
 */
async function bytesOf(content) {
  if (!Array.isArray(content)) return jsonBytes({ version: VERSION, content });
  const slices = new Slices();
  const parts = [utf8(`{"version":${VERSION},"content":[`)];
  for (let at = 0; at < content.length; at += PART) {
    const text = JSON.stringify(content.slice(at, at + PART)).slice(1, -1);
    parts.push(utf8(at === 0 ? text : `,${text}`));
    if (slices.isOver) await slices.next();
  }
  return joined(...parts, utf8(']}'));
}
