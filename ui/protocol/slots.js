// So many at a time.

export class Slots {
  #free;
  /** @type {(() => void)[]} */
  #waiting = [];

  /** @param {number} count */
  constructor(count) {
    this.#free = count;
  }

  /** @returns {Promise<void>} once there is one */
  async take() {
    if (this.#free > 0) --this.#free;
    else await new Promise((resolve) => this.#waiting.push(() => resolve(null)));
  }

  give() {
    const next = this.#waiting.shift();
    if (next) next();
    else ++this.#free;
  }
}
