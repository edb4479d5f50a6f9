// The transfers: those under way, and the most recent of those that ended.

import { Progress } from './progress.js';

/** @typedef {import('./types.js').Transfer} Transfer */

const DOCUMENT = 'transfers';
const MOST = 50;
const INTERVAL = 100;
const ENDED = ['complete', 'failed', 'cancelled', 'declined'];

/** @param {Pick<Transfer, 'state'>} transfer */
export const isEnded = ({ state }) => ENDED.includes(state);

/**
 * One that was sent and could be sent again.
 * @param {Transfer} transfer
 */
export const canRetry = (transfer) =>
  transfer.direction === 'send' && isEnded(transfer) && transfer.state !== 'complete';

/** Dispatches “change”, ten times a second at most. */
export class Transfers extends EventTarget {
  #storage;
  /** @type {Transfer[]} newest first */
  #list;
  /** @type {Map<string, Progress>} */
  #progress = new Map();
  /** @type {ReturnType<typeof setTimeout> | undefined} */
  #timer;
  #told = 0;

  /**
   * @param {import('./storage.js').Storage} storage
   * @param {Transfer[]} list
   */
  constructor(storage, list) {
    super();
    this.#storage = storage;
    this.#list = list;
  }

  /** @param {import('./storage.js').Storage} storage */
  static async load(storage) {
    const stored = await storage.load(DOCUMENT);
    const list = Array.isArray(stored) ? stored.filter((entry) => typeof entry?.id === 'string') : [];
    return new Transfers(storage, list.map((transfer) => (isEnded(transfer) ? transfer :
      { ...transfer, state: 'failed', code: null, message: 'The program ended before it was done.' })));
  }

  /** Unfinished first, then the recent ones, newest first each. */
  get list() {
    return [...this.#list.filter((one) => !isEnded(one)), ...this.#list.filter(isEnded)];
  }

  /** @param {string} id */
  find(id) {
    const transfer = this.#list.find((one) => one.id === id);
    if (!transfer) throw new Error('That transfer is no longer in the list.');
    return transfer;
  }

  /**
   * @param {Pick<Transfer, 'direction' | 'deviceId' | 'deviceName' | 'name' | 'state'> &
   *         Partial<Transfer>} given
   * @returns {Transfer}
   */
  add(given) {
    /** @type {Transfer} */
    const transfer = {
      id: crypto.randomUUID(), code: null, message: null, fileCount: 0, bytesTotal: 0, bytesDone: 0,
      rate: 0, secondsLeft: null, items: [], offered: [], offeredCount: 0, locations: [], text: null,
      when: Date.now(), ...given,
    };
    this.#replace([transfer, ...this.#list]);
    return transfer;
  }

  /**
   * @param {string} id
   * @param {Partial<Transfer>} change
   */
  change(id, change) {
    const isNewState = change.state !== undefined;
    this.#replace(this.#list.map((one) =>
      (one.id === id ? { ...one, ...change, when: isNewState ? Date.now() : one.when } : one)),
    isNewState);
    if (change.state && ENDED.includes(change.state)) this.#progress.delete(id);
  }

  /**
   * @param {string} id
   * @param {number} bytes since the last time
   */
  advance(id, bytes) {
    const now = performance.now();
    const transfer = this.#list.find((one) => one.id === id);
    if (!transfer) return;
    const progress = this.#progress.get(id) ?? new Progress(transfer.bytesTotal, now);
    this.#progress.set(id, progress);
    Object.assign(transfer, progress.add(bytes, now));
    this.#tell();
  }

  /** @param {(transfer: Transfer) => boolean} isUnwanted only ended ones go */
  remove(isUnwanted) {
    this.#replace(this.#list.filter((one) => !isEnded(one) || !isUnwanted(one)));
  }

  /**
   * @param {Transfer[]} list
   * @param {boolean} [isLasting]
   */
  #replace(list, isLasting = true) {
    const surplus = new Set(list.filter(isEnded).slice(MOST));
    this.#list = list.filter((one) => !surplus.has(one));
    this.#tell();
    if (isLasting) this.#storage.save(DOCUMENT, this.#list).catch(() => {});
  }

  #tell() {
    if (this.#timer !== undefined) return;
    const wait = Math.max(0, this.#told + INTERVAL - performance.now());
    this.#timer = setTimeout(() => {
      this.#timer = undefined;
      this.#told = performance.now();
      // What a view keeps is not to change under it.
      this.#list = this.#list.map((one) => (isEnded(one) ? one : { ...one }));
      this.dispatchEvent(new Event('change'));
    }, wait);
  }
}
