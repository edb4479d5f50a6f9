// Limits how often other devices may ask the person: one question at a time from a device (and, for unknown
// devices, from an address), and a pause after a question that nobody answered.

import { Limit, Time } from '../protocol/limits.js';

/** Addresses whose pauses are remembered. */
const REMEMBERED = 1000;

/** @typedef {{ address: string, device: string, isKnown: boolean }} Asker */

export class QuestionGate {
  /** @type {Set<Asker>} */
  #asking = new Set();
  /** @type {Map<string, { until: number, length: number }>} */
  #pauses = new Map();

  /**
   * Whether somebody may ask now; then end() has to follow.
   * @param {Asker} asker
   * @param {number} now in milliseconds
   */
  begin(asker, now) {
    const open = [...this.#asking];
    const alike = open.filter(({ isKnown }) => isKnown === asker.isKnown);
    const most = asker.isKnown ? Limit.knownQuestions : Limit.strangersQuestions;
    const isAsking = alike.some(
      ({ device, address }) =>
        device === asker.device || (!asker.isKnown && address === asker.address),
    );
    const isPausing = !asker.isKnown && now < (this.#pauses.get(asker.address)?.until ?? 0);
    if (isAsking || isPausing || alike.length >= most) return false;
    this.#asking.add(asker);
    return true;
  }

  /**
   * @param {Asker} asker
   * @param {boolean} wasAnswered
   * @param {number} now
   */
  end(asker, wasAnswered, now) {
    if (!this.#asking.delete(asker) || asker.isKnown) return;
    const before = this.#pauses.get(asker.address)?.length ?? 0;
    this.#pauses.delete(asker.address);
    if (wasAnswered) return;
    const length = Math.min(Math.max(Time.pause, 2 * before), Time.longestPause);
    this.#pauses.set(asker.address, { until: now + length, length });
    if (this.#pauses.size > REMEMBERED) this.#pauses.delete(this.#pauses.keys().next().value ?? '');
  }
}
