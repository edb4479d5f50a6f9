// The questions that wait for the person's answer, by transfer.

export class Questions {
  /** @type {Map<string, (answer: boolean) => void>} */
  #open = new Map();

  /** @type {Set<string>} */
  #answered = new Set();

  /**
   * Whether the person has answered anything of a transfer.
   * @param {string} id
   */
  wasAnswered(id) {
    return this.#answered.has(id);
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
   * @returns {boolean} whether there was a question
   */
  answer(id, answer) {
    const resolve = this.#open.get(id);
    if (!resolve) return false;
    this.#answered.add(id);
    this.#open.delete(id);
    resolve(answer);
    return true;
  }

  /** @param {string} id */
  drop(id) {
    this.#open.delete(id);
    this.#answered.delete(id);
  }
}
