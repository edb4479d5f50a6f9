// What each source on the network may take of this device's attention.

const SECOND = 1000;  // ms

/** At most `perSource` a second from one source, and from at most `sources` of them. */
export class Budget {
  #perSource;
  #sources;
  #since = -Infinity;
  /** @type {Map<string, number>} */
  #spent = new Map();

  /**
   * @param {number} perSource
   * @param {number} sources
   */
  constructor(perSource, sources) {
    this.#perSource = perSource;
    this.#sources = sources;
  }

  /**
   * @param {string} source
   * @param {number} now in milliseconds
   */
  allows(source, now) {
    if (now - this.#since >= SECOND) {
      this.#since = now;
      this.#spent.clear();
    }
    const spent = this.#spent.get(source) ?? 0;
    if (spent >= this.#perSource || (spent === 0 && this.#spent.size >= this.#sources)) return false;
    this.#spent.set(source, spent + 1);
    return true;
  }
}
