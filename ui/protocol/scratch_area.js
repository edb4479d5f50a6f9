// Where content waits until it is whole, and what is left there of transfers that ended early.
//
//   TRANSFER-ENTRY.part  what has arrived of a file
//   TRANSFER.log         lines: “m” and the digest of a manifest that was accepted, “w” and the name
//                        of an entry that has arrived as a whole, “p” where the person paused
//
// TRANSFER is a digest of the sender's key and of its number of the transfer, ENTRY a hash of the path,
// size and modification time. So the same offer finds what it left, and no other one does. A sender that
// makes two entries have one hash loses one of them.

import { EngineFile, list, remove, stat } from '../engine/files.js';
import { platform } from '../platform.js';
import { digest, hex, joined, textOf, utf8 } from './bytes.js';
import { contentDigest } from './content_digest.js';
import { Time } from './limits.js';

const OURS = /^([0-9a-f]{32})(?:\.log|-([0-9a-f]{16})\.part)$/;
/** A scratch file that is of no transfer, as the host names it. */
const OTHER = /^[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}-/;
/** Entries that are looked at, at once. */
const AT_ONCE = 500;
const LARGEST_LOG = 64 << 20;
const LARGEST_READ = 16 << 20;

/** @typedef {import('./manifest.js').Entry} Entry */
/** `digest` of the content so far; null for an entry that was put in place.
 *  @typedef {{ index: number, bytes: number, digest: string | null }} Had */

/** The folder, which the host has made. */
export async function scratchFolder() {
  const path = await platform.temporaryReceivePath('x');
  return path.slice(0, path.lastIndexOf('/'));
}

/**
 * What a transfer's files in the area are called by.
 * @param {Uint8Array} key the sender's
 * @param {string} transfer
 */
export const scratchName = async (key, transfer) =>
  hex(await digest('Brevanholt transfer', key, utf8(transfer))).slice(0, 32);

/**
 * 64 bits, of two FNV-1a hashes over UTF-16 units that begin differently.
 * @param {Entry} entry
 */
function entryName({ path, size, modified }) {
  const text = `${size} ${modified} ${path}`;
  let one = 0x811c9dc5;
  let other = 0x9e3779b9;
  for (let at = 0; at < text.length; ++at) {
    const unit = text.charCodeAt(at);
    one = Math.imul(one ^ unit, 0x01000193);
    other = Math.imul(other ^ unit, 0x01000193) ^ (other >>> 15);
  }
  return [one, other].map((half) => (half >>> 0).toString(16).padStart(8, '0')).join('');
}

/**
 * Removes what nobody will go on with: all that is older than a week, and all files of no transfer.
 * @param {number} now in milliseconds since 1970
 */
export async function sweepScratchArea(now) {
  const folder = await scratchFolder();
  const names = await list(folder);
  const logs = names.filter((name) => name.endsWith('.log') && OURS.test(name));
  const fresh = new Set();
  for (const log of logs) {
    const found = await stat(`${folder}/${log}`).catch(() => null);
    if (found && now - found.modified < Time.keep) fresh.add(log.slice(0, 32));
  }
  const left = names.filter((name) => {
    const ours = OURS.exec(name);
    return ours ? !fresh.has(ours[1]) : OTHER.test(name);
  });
  await Promise.all(left.map((name) => remove(`${folder}/${name}`).catch(() => {})));
}

/**
 * Removes all that is left of a transfer.
 * @param {string} name
 */
export async function discardScratch(name) {
  const folder = await scratchFolder();
  const names = (await list(folder)).filter((one) => OURS.exec(one)?.[1] === name);
  await Promise.all(names.map((one) => remove(`${folder}/${one}`).catch(() => {})));
}

/**
 * Has the person be asked again before a transfer goes on.
 * @param {string} name
 */
export async function pauseScratch(name) {
  await (await TransferScratch.open(name)).pause();
}

/** One transfer's part of the area. */
export class TransferScratch {
  #folder;
  #name;
  /** The names of entries of which something is here. */
  #parts;
  #whole = new Set();
  /** @type {string | null} */
  #manifest = null;
  #isNew = true;
  #logged = 0;
  /** @type {Promise<EngineFile> | null} */
  #log = null;
  /** @type {Promise<unknown>} */
  #appending = Promise.resolve();

  /**
   * @param {string} folder
   * @param {string} name
   * @param {Set<string>} parts
   */
  constructor(folder, name, parts) {
    this.#folder = folder;
    this.#name = name;
    this.#parts = parts;
  }

  /** @param {string} name */
  static async open(name) {
    const folder = await scratchFolder();
    const ours = (await list(folder))
      .map((one) => OURS.exec(one))
      .filter((one) => one?.[1] === name);
    const scratch = new TransferScratch(
      folder,
      name,
      new Set(ours.flatMap((one) => one?.[2] ?? [])),
    );
    await scratch.#readLog();
    return scratch;
  }

  /**
   * Whether the person has accepted this very manifest.
   * @param {string} manifest its digest
   */
  wasAccepted(manifest) {
    return this.#manifest === manifest;
  }

  /** @param {string} manifest the digest of one that was accepted */
  async accept(manifest) {
    if (this.#manifest !== manifest) await this.#append([`m ${manifest}`]);
    this.#manifest = manifest;
  }

  /** The person has to be asked again. */
  async pause() {
    await this.#append(['p']);
    await this.close();
  }

  /**
   * What has arrived of these entries before.
   * @param {Entry[]} entries
   * @returns {Promise<Had[]>}
   */
  async had(entries) {
    if (this.#parts.size === 0 && this.#whole.size === 0) return [];
    const had = [];
    for (let at = 0; at < entries.length; at += AT_ONCE) {
      const some = entries.slice(at, at + AT_ONCE);
      had.push(...(await Promise.all(some.map((entry, next) => this.#had(entry, at + next)))));
    }
    return had.filter((one) => one !== null);
  }

  /**
   * The file for an entry's content, of which so many bytes are there.
   * @param {Entry} entry
   * @param {number} offset
   * @returns {Promise<string>} its path, at which there is nothing where that is 0
   */
  async partFor(entry, offset) {
    const name = entryName(entry);
    const path = this.#pathOf(name);
    if (offset === 0 && this.#parts.has(name)) await remove(path);
    this.#parts.add(name);
    return path;
  }

  /**
   * Records that entries have arrived as a whole, before they are put in place.
   * @param {Entry[]} entries
   */
  async markWhole(entries) {
    if (entries.length > 0) await this.#append(entries.map((entry) => `w ${entryName(entry)}`));
  }

  async close() {
    await this.#appending.catch(() => {});
    const log = await this.#log?.catch(() => null);
    this.#log = null;
    await log?.close().catch(() => {});
  }

  async discard() {
    await this.close();
    await discardScratch(this.#name);
  }

  /**
   * @param {Entry} entry
   * @param {number} index
   * @returns {Promise<Had | null>}
   */
  async #had(entry, index) {
    if (entry.kind !== 'file') return null;
    const name = entryName(entry);
    if (!this.#parts.has(name)) {
      return this.#whole.has(name) ? { index, bytes: entry.size, digest: null } : null;
    }
    const path = this.#pathOf(name);
    const bytes = (await stat(path).catch(() => null))?.size ?? 0;
    if (bytes === 0 || bytes > entry.size) return null;
    const known = await contentDigest(path, bytes).catch(() => null);
    return known === null ? null : { index, bytes, digest: known };
  }

  async #readLog() {
    const path = this.#logPath;
    const found = await stat(path);
    if (found?.kind !== 'file') return;
    this.#isNew = false;
    this.#logged = found.size;
    if (found.size > LARGEST_LOG) return;
    const file = await EngineFile.open(path);
    const pieces = [];
    for (let at = 0; at < found.size; at += LARGEST_READ)
      pieces.push(await file.read(at, LARGEST_READ));
    await file.close();
    // The last line may be cut.
    for (const line of textOf(joined(...pieces))
      .split('\n')
      .slice(0, -1)) {
      if (line === 'p') this.#manifest = null;
      else if (line.startsWith('m ')) this.#manifest = line.slice(2);
      else if (line.startsWith('w ')) this.#whole.add(line.slice(2));
    }
  }

  /** @param {string[]} lines */
  #append(lines) {
    const bytes = utf8(lines.map((line) => `${line}\n`).join(''));
    this.#log ??= this.#isNew ? EngineFile.create(this.#logPath) : EngineFile.edit(this.#logPath);
    this.#isNew = false;
    const at = this.#logged;
    this.#logged += bytes.length;
    // Not one after the other: the host writes in the order of the calls.
    const written = this.#log.then((log) => log.write(at, bytes));
    this.#appending = Promise.all([this.#appending.catch(() => {}), written]);
    this.#appending.catch(() => {});
    return written;
  }

  get #logPath() {
    return `${this.#folder}/${this.#name}.log`;
  }

  /** @param {string} entry */
  #pathOf(entry) {
    return `${this.#folder}/${this.#name}-${entry}.part`;
  }
}
