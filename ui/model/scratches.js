// Clears up after a run that ended in the middle of receiving.

import { remove } from '../engine/files.js';
import { scratchPaths } from '../protocol/scratch.js';

const DOCUMENT = 'scratches';
const PAUSE = 500;

/**
 * Removes what an earlier run left, and keeps from now on what this one would leave.
 * @param {import('./storage.js').Storage} storage
 */
export async function sweepScratches(storage) {
  const left = await storage.load(DOCUMENT);
  const paths = Array.isArray(left) ? left.filter((path) => typeof path === 'string') : [];
  await Promise.all(paths.map((path) => remove(path).catch(() => {})));
  let isWaiting = false;
  let isStale = false;
  const save = () => {
    isStale = false;
    storage.save(DOCUMENT, [...scratchPaths.paths]).catch(() => {});
  };
  if (paths.length > 0) save();
  // The first at once; then, as small files come and go faster than they can be noted, some.
  scratchPaths.addEventListener('change', () => {
    isStale = true;
    if (isWaiting) return;
    isWaiting = true;
    save();
    setTimeout(() => {
      isWaiting = false;
      if (isStale) save();
    }, PAUSE);
  });
}
