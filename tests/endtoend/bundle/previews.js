// Asks for previews, all at once, and leaves each that comes beside what it shows.

import { call } from './outcome.js';
import { EngineFile } from './engine/files.js';

/** @param {{ location: string, maximumDimension?: number, keep?: string }} asked */
async function preview({ keep, ...asked }) {
  const result = await call('receivedFilePreview', asked);
  if (keep && result.value) {
    const file = await EngineFile.create(keep);
    await file.write(0, result.value);
    await file.close();
  }
  return result;
}

/** @param {{ asked: string }} given */
export async function scenario({ asked }) {
  return Promise.all(JSON.parse(asked).map(preview));
}
