// A sentence that the window shows for a while, with a button: to put back what was removed, or to add in
// another way what was left out.

/** In milliseconds. */
const SHOWN = 12_000;

/** `label`, `run`: the button and its action; `settle`: what to do if it was not pressed.
 *  @typedef {{ text: string, label?: string, run?: () => unknown,
 *              settle?: () => unknown }} Suggestion */

/** Dispatches “change”. There is one at a time; the next one settles it. */
export class Suggestions extends EventTarget {
  /** @type {Suggestion | null} */
  #current = null;
  /** @type {ReturnType<typeof setTimeout> | undefined} */
  #timer;

  get current() {
    return this.#current;
  }

  /** @param {Suggestion} suggestion */
  offer(suggestion) {
    this.dismiss();
    this.#current = suggestion;
    this.#timer = setTimeout(() => this.dismiss(), SHOWN);
    this.dispatchEvent(new Event('change'));
  }

  /** Does what is suggested. */
  async take() {
    const taken = this.#end();
    await taken?.run?.();
  }

  dismiss() {
    this.#end()?.settle?.();
  }

  #end() {
    const ended = this.#current;
    if (!ended) return null;
    clearTimeout(this.#timer);
    this.#current = null;
    this.dispatchEvent(new Event('change'));
    return ended;
  }
}
