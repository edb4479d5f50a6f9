// The digest by which both sides recognise that they have the same beginning of a file.

import { EngineFile } from '../engine/files.js';
import { hex, joined, sha256 } from './bytes.js';

const CHUNK = 1 << 20;
/** Chunks that are read and hashed at once. */
const AT_ONCE = 4;

/**
 * SHA-256 over the SHA-256 of each mebibyte, in hexadecimal; null where the file is shorter.
 * @param {string} path
 * @param {number} size of the beginning, in bytes
 * @returns {Promise<string | null>}
 */
export async function contentDigest(path, size) {
  const file = await EngineFile.open(path);
  try {
    const count = Math.ceil(size / CHUNK);
    /** @type {Uint8Array[]} */
    const digests = [];
    for (let at = 0; at < count; at += AT_ONCE) {
      const some = Array.from({ length: Math.min(AT_ONCE, count - at) }, (_, next) => at + next);
      const read = some.map(async (number) => {
        const length = Math.min(CHUNK, size - number * CHUNK);
        const bytes = await file.read(number * CHUNK, length);
        return bytes.length === length ? sha256(bytes) : null;
      });
      for (const digest of await Promise.all(read)) {
        if (!digest) return null;
        digests.push(digest);
      }
    }
    return hex(await sha256(joined(...digests)));
  } finally {
    await file.close();
  }
}
