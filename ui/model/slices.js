// Long work in slices, so that the window answers meanwhile.

/** In milliseconds. */
const SLICE = 10;

/**
 * Array.map(), with pauses in which the page does other things.
 * @template T, U
 * @param {T[]} list
 * @param {(one: T) => U} convert
 * @returns {Promise<U[]>}
 */
export async function mappedInSlices(list, convert) {
  const results = [];
  let began = performance.now();
  for (const one of list) {
    results.push(convert(one));
    if (performance.now() - began < SLICE) continue;
    await new Promise((resolve) => setTimeout(resolve));
    began = performance.now();
  }
  return results;
}
