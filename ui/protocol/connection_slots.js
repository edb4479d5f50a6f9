// Limits how many connections other devices may hold open. Unknown devices share a few places; known
// devices have places of their own.

import { Budget } from './budget.js';
import { Limit } from './limits.js';

/** @typedef {import('./frames.js').FrameStream} FrameStream */

export class ConnectionSlots {
  /** Those in the handshake, the oldest first. @type {Set<FrameStream>} */
  #arriving = new Set();
  #budget = new Budget(Limit.callsPerSource, Limit.calls);
  #strangers = 0;
  #known = 0;

  /**
   * Whether a new connection may begin its handshake. Where there are too many it takes the place of
   * the oldest: an honest handshake takes milliseconds.
   * @param {FrameStream} stream
   */
  arrive(stream) {
    if (!this.#budget.allows(stream.peer, performance.now())) return false;
    const fromThere = [...this.#arriving].filter(({ peer }) => peer === stream.peer).length;
    if (fromThere >= Limit.handshakesPerSource) return false;
    if (this.#arriving.size >= Limit.handshakes) {
      const [oldest] = this.#arriving;
      this.#arriving.delete(oldest);
      oldest.close();
    }
    this.#arriving.add(stream);
    return true;
  }

  /** @param {FrameStream} stream */
  leave(stream) {
    this.#arriving.delete(stream);
  }

  /**
   * Takes a place for a connection after its handshake. Returns a function that gives the place back, or
   * null where there is no place.
   * @param {boolean} isKnown
   */
  take(isKnown) {
    if (isKnown ? this.#known >= Limit.known : this.#strangers >= Limit.strangers) return null;
    const change = (/** @type {number} */ by) => {
      if (isKnown) this.#known += by;
      else this.#strangers += by;
    };
    change(1);
    return () => change(-1);
  }
}
