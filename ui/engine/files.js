// Files for UI code. A page reads what the host has handed to it and what is in its own folders
// (Application Support, the scratch area). Only there it writes, to files that it created, and
// creating never takes an existing name. Any other path is refused. Each operation resolves when the
// disk has done it: awaiting a write before the next is all the back-pressure that is needed.
//
// Failures are MethodErrors with the code "file_error", the system's text as message, and the
// error's name, such as "ENOSPC", as details.

import { MethodChannel, MethodError } from './method_channel.js';

const channel = new MethodChannel('engine/files');

/** @typedef {{ kind: 'file' | 'directory' | 'other', size: number, modified: number }} FileStat */

/**
 * Null where there is nothing; `modified` is in milliseconds since 1970.
 * @param {string} path
 * @returns {Promise<FileStat | null>}
 */
export function stat(path) {
  return channel.invokeMethod('stat', { path });
}

/** @typedef {{ kind: 'file' | 'directory', size: number, modified: number }} Description */
const KINDS = /** @type {const} */ ([null, 'file', 'directory']);

/**
 * Looks at many files at once. Null for each that is neither file nor folder, or cannot be looked at.
 * @param {string[]} paths
 * @returns {Promise<(Description | null)[]>}
 */
export async function describe(paths) {
  const { kinds, sizes, modified } = await channel.invokeMethod('describe', { paths });
  return paths.map((_, at) => {
    const kind = KINDS[kinds[at]];
    return kind ? { kind, size: sizes[at], modified: modified[at] } : null;
  });
}

/**
 * Removes a file or a link, never a folder. Nothing there is no error.
 * @param {string} path
 */
export function remove(path) {
  return channel.invokeMethod('remove', { path });
}

/**
 * The names in a folder, hidden ones included; none where there is no such folder.
 * @param {string} path
 * @returns {Promise<string[]>}
 */
export function list(path) {
  return channel.invokeMethod('list', { path });
}

/**
 * Renames within one file system; fails where the new name is taken.
 * @param {string} path
 * @param {string} to
 */
export function move(path, to) {
  return channel.invokeMethod('move', { path, to });
}

/**
 * How many bytes may still be written to the file system of a folder.
 * @param {string} path
 * @returns {Promise<number>}
 */
export function space(path) {
  return channel.invokeMethod('space', { path });
}

/**
 * Resolves when whole files would outlast a power cut, each with a modification time (in milliseconds
 * since 1970) and with the permissions of a file that this user makes.
 * @param {{ path: string, modified: number }[]} files
 * @returns {Promise<(MethodError | null)[]>} why each could not be saved, or null
 */
export async function settle(files) {
  const failures = await channel.invokeMethod('settle', { files });
  return failures.map((/** @type {Failure | null} */ failure) =>
    failure ? new MethodError(...failure) : null,
  );
}

/** A whole file; without a path, an empty one that is made in its place.
 *  @typedef {{ path: string | null, relativePath: string, modified: number }} Publication */

/**
 * Moves files into the receive folder, each under a free name at its path there.
 * @param {Publication[]} files
 * @returns {Promise<(string | MethodError)[]>} where each is, once that outlasts a power cut, or why not
 */
export async function publish(files) {
  const places = await channel.invokeMethod('publish', { files });
  return places.map((/** @type {Failure | string} */ place) =>
    typeof place === 'string' ? place : new MethodError(...place),
  );
}

/** @typedef {[string, string, string]} Failure */

/** One open file. */
export class EngineFile {
  #handle;

  /** @param {number} handle */
  constructor(handle) {
    this.#handle = handle;
  }

  /** @param {string} path */
  static async open(path) {
    return new EngineFile(await channel.invokeMethod('open', { path }));
  }

  /** @param {string} path */
  static async create(path) {
    return new EngineFile(await channel.invokeMethod('create', { path }));
  }

  /**
   * Opens a file that was created earlier, to go on writing to it.
   * @param {string} path
   */
  static async edit(path) {
    return new EngineFile(await channel.invokeMethod('edit', { path }));
  }

  /**
   * At most `length` bytes (16 MiB a call); fewer only at the file's end.
   * @param {number} offset
   * @param {number} length
   * @returns {Promise<Uint8Array>}
   */
  read(offset, length) {
    return channel.invokeMethod('read', { handle: this.#handle, offset, length });
  }

  /**
   * @param {number} offset
   * @param {Uint8Array} bytes
   * @returns {Promise<void>}
   */
  write(offset, bytes) {
    return channel.invokeMethod('write', { handle: this.#handle, offset, bytes });
  }

  /** Resolves when what was written would outlast a power cut. */
  flush() {
    return channel.invokeMethod('flush', { handle: this.#handle });
  }

  close() {
    return channel.invokeMethod('close', { handle: this.#handle });
  }
}

/**
 * Replaces a whole file, or creates it: it holds exactly these bytes, or what it held before.
 * @param {string} path
 * @param {Uint8Array} bytes
 */
export function replace(path, bytes) {
  return channel.invokeMethod('replace', { path, bytes });
}
