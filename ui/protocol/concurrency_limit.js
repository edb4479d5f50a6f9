// Lets so many things happen at the same time; more have to wait.

export class ConcurrencyLimit {
  #free;
  /** @type {(() => void)[]} */
  #waiting = [];

  /** @param {number} count */
  constructor(count) {
    this.#free = count;
  }

  /** @returns {Promise<void>} once there is room; release() must follow */
  async acquire() {
    if (this.#free > 0) --this.#free;
    else await new Promise((resolve) => this.#waiting.push(() => resolve(null)));
  }

  release() {
    const next = this.#waiting.shift();
    if (next) next();
    else ++this.#free;
  }
}
