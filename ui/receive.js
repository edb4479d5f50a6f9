// Receives one item: bytes in chunks to a scratch file, which the host then moves into place.

import { EngineFile, remove } from './engine/files.js';
import { platform } from './platform.js';

const CHUNK = 1 << 20;

/** @param {string} path */
const lastComponent = (path) => path.replace(/\/+$/, '').split('/').at(-1) ?? '';

/**
 * @param {string} sourcePath
 * @param {(received: number) => void} onProgress the bytes received so far
 * @returns {Promise<import('./platform.js').ReceivedFile>}
 */
export async function receiveFile(sourcePath, onProgress) {
  const name = lastComponent(sourcePath);
  const source = await EngineFile.open(sourcePath);
  try {
    const scratchPath = await platform.temporaryReceivePath(name);
    try {
      await writeChunks(source, scratchPath, onProgress);
      const location = await platform.publishReceivedFile({ path: scratchPath, name });
      const [file] = await platform.locateReceivedFiles([lastComponent(location)]);
      return file;
    } catch (error) {
      await remove(scratchPath);
      throw error;
    }
  } finally {
    await source.close();
  }
}

/**
 * @param {EngineFile} source
 * @param {string} scratchPath
 * @param {(received: number) => void} onProgress
 */
async function writeChunks(source, scratchPath, onProgress) {
  const scratch = await EngineFile.create(scratchPath);
  try {
    for (let offset = 0; ;) {
      const chunk = await source.read(offset, CHUNK);
      if (chunk.length === 0) break;
      await scratch.write(offset, chunk);
      offset += chunk.length;
      onProgress(offset);
    }
    await scratch.flush();
  } finally {
    await scratch.close();
  }
}
