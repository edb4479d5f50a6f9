// The rate of a transfer and the time it still needs.

/** In milliseconds: what the rate is taken over, and without a byte for how long it has stalled. */
const WINDOW = 5000;
const STALLED = 2000;

export class Progress {
  #total;
  #done;
  #changed;
  /** @type {{ at: number, done: number }[]} */
  #samples;

  /**
   * @param {number} total in bytes
   * @param {number} done of them
   * @param {number} now in milliseconds, of any steady clock
   */
  constructor(total, done, now) {
    this.#total = total;
    this.#done = Math.min(done, total);
    this.#changed = now;
    this.#samples = [{ at: now, done: this.#done }];
  }

  /**
   * @param {number} done in bytes, of all
   * @param {number} now
   */
  add(done, now) {
    if (done <= this.#done) return;
    this.#done = Math.min(done, this.#total);
    // After a pause the rate is measured anew.
    if (now - this.#changed > STALLED) this.#samples = [{ at: now, done: this.#done }];
    this.#changed = now;
    const last = this.#samples[this.#samples.length - 1];
    if (now - last.at >= 100) this.#samples.push({ at: now, done: this.#done });
    while (this.#samples.length > 2 && now - this.#samples[1].at > WINDOW) this.#samples.shift();
  }

  /**
   * The present rate, remaining time and whether it has stalled.
   * @param {number} now
   * @returns {{ bytesDone: number, rate: number, secondsLeft: number | null, isStalled: boolean }}
   */
  at(now) {
    const isStalled = now - this.#changed > STALLED && this.#done < this.#total;
    const first = this.#samples[0];
    const elapsed = (now - first.at) / 1000;
    const rate = elapsed < 0.5 || isStalled ? 0 : (this.#done - first.done) / elapsed;
    const secondsLeft = rate > 0 ? Math.ceil((this.#total - this.#done) / rate) : null;
    return { bytesDone: this.#done, rate: Math.round(rate), secondsLeft, isStalled };
  }
}
