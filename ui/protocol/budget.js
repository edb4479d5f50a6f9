// Limits how many messages from the network are processed in a second.

const SECOND = 1000; // ms

/** At most `perSource` a second from one source, and `total` from all of them. */
export class Budget {
  #perSource;
  #total;
  #left;
  #since = -Infinity;
  /** @type {Map<string, number>} */
  #spent = new Map();

  /**
   * @param {number} perSource
   * @param {number} total
   */
  constructor(perSource, total) {
    this.#perSource = perSource;
    this.#total = total;
    this.#left = total;
  }

  /**
   * @param {string} source
   * @param {number} now in milliseconds
   */
  allows(source, now) {
    if (now - this.#since >= SECOND) {
      this.#since = now;
      this.#left = this.#total;
      this.#spent.clear();
    }
    const spent = this.#spent.get(source) ?? 0;
    if (spent >= this.#perSource || this.#left === 0) return false;
    this.#spent.set(source, spent + 1);
    --this.#left;
    return true;
  }
}
