// Long work in slices, so that the window answers meanwhile.

/** In milliseconds. */
const SLICE = 8;

/** `while (…) { …; if (slices.isOver) await slices.next(); }` */
export class Slices {
  #began = performance.now();

  get isOver() {
    return performance.now() - this.#began >= SLICE;
  }

  /** Lets the page do other things. */
  async next() {
    await new Promise((resolve) => setTimeout(resolve));
    this.#began = performance.now();
  }
}

/**
 * Array.map(), in slices.
 * @template T, U
 * @param {T[]} list
 * @param {(one: T) => U} convert
 * @returns {Promise<U[]>}
 */
export async function mappedInSlices(list, convert) {
  const slices = new Slices();
  const results = [];
  for (const one of list) {
    results.push(convert(one));
    if (slices.isOver) await slices.next();
  }
  return results;
}
