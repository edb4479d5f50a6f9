// Reads files that fit into memory.

import { EngineFile, stat } from '../engine/files.js';
import { joined } from '../protocol/bytes.js';

const CHUNK = 8 << 20;

/**
 * The bytes of a file, or null where there is nothing. Throws for anything but a file, and for one
 * that is too large.
 * @param {string} path
 * @param {number} largest in bytes
 */
export async function readWhole(path, largest) {
  const found = await stat(path);
  if (!found) return null;
  if (found.kind !== 'file') throw new TypeError('it is not a file');
  if (found.size > largest) throw new RangeError(`it has ${found.size} bytes`);
  const file = await EngineFile.open(path);
  try {
    const parts = [];
    for (let at = 0; at < found.size; at += CHUNK) parts.push(await file.read(at, CHUNK));
    return joined(...parts);
  } finally {
    await file.close();
  }
}
