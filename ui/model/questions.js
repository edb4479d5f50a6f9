// What waits for the person's answer, by transfer.

export class Questions {
  /** @type {Map<string, (answer: boolean) => void>} */
  #open = new Map();

  get count() {
    return this.#open.size;
  }

  /**
   * @param {string} id
   * @returns {Promise<boolean>}
   */
  ask(id) {
    return new Promise((resolve) => this.#open.set(id, resolve));
  }

  /**
   * @param {string} id
   * @param {boolean} answer
   */
  answer(id, answer) {
    this.#open.get(id)?.(answer);
    this.#open.delete(id);
  }

  /** @param {string} id */
  drop(id) {
    this.#open.delete(id);
  }
}
