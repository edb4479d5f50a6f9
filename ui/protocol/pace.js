// Lets so many bytes wait for the disk.

const UNWRITTEN = 8 << 20;

export class Pace {
  #waiting = 0;
  /** @type {Set<Promise<void>>} */
  #writes = new Set();

  /**
   * Resolves when there is room for more. How the write ends is for its owner.
   * @param {number} size
   * @param {Promise<void>} write
   */
  async take(size, write) {
    this.#waiting += size;
    const settled = write
      .catch(() => {})
      .finally(() => {
        this.#waiting -= size;
        this.#writes.delete(settled);
      });
    this.#writes.add(settled);
    while (this.#waiting > UNWRITTEN) await Promise.race(this.#writes);
  }
}
