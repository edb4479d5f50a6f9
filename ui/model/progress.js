// How fast it goes, and how long it will take.

const WINDOW = 5000;

export class Progress {
  #total;
  #done = 0;
  /** @type {{ at: number, done: number }[]} */
  #samples;

  /**
   * @param {number} total in bytes
   * @param {number} now in milliseconds, of any steady clock
   */
  constructor(total, now) {
    this.#total = total;
    this.#samples = [{ at: now, done: 0 }];
  }

  /**
   * @param {number} bytes since the last time
   * @param {number} now
   * @returns {{ bytesDone: number, rate: number, secondsLeft: number | null }}
   */
  add(bytes, now) {
    this.#done = Math.min(this.#done + bytes, this.#total);
    const last = this.#samples[this.#samples.length - 1];
    if (now - last.at >= 100) this.#samples.push({ at: now, done: this.#done });
    while (this.#samples.length > 2 && now - this.#samples[1].at > WINDOW) this.#samples.shift();
    const first = this.#samples[0];
    const elapsed = (now - first.at) / 1000;
    const rate = elapsed < 0.5 ? 0 : (this.#done - first.done) / elapsed;
    const secondsLeft = rate > 0 ? Math.ceil((this.#total - this.#done) / rate) : null;
    return { bytesDone: this.#done, rate: Math.round(rate), secondsLeft };
  }
}
