// The devices that the person can choose from: those that discovery hears, and what is known of
// their keys.

import { fingerprintOf, hex } from '../protocol/bytes.js';
import { Discovery } from '../protocol/discovery.js';

/** @typedef {import('./types.js').Device} Device */
/** @typedef {import('../protocol/discovery.js').Neighbour} Neighbour */

/** Recovery requests come in bursts. */
const CALM = 250;

/** Dispatches “change”. */
export class Devices extends EventTarget {
  #trust;
  #discovery;
  /** @type {Map<string, string>} fingerprints by key */
  #fingerprints = new Map();
  /** @type {Device[]} */
  #list = [];
  /** @type {ReturnType<typeof setTimeout> | undefined} */
  #restart;

  /**
   * @param {import('../protocol/handshake.js').Party} self
   * @param {import('./trust.js').Trust} trust
   */
  constructor(self, trust) {
    super();
    this.#trust = trust;
    this.#discovery = new Discovery(self);
    this.#discovery.addEventListener('change', () => this.#refresh());
    trust.addEventListener('change', () => this.#refresh());
  }

  get list() {
    return this.#list;
  }

  start() {
    return this.#discovery.start();
  }

  /** Looks again, on the networks that there are now. */
  recover() {
    clearTimeout(this.#restart);
    this.#restart = setTimeout(() => this.#discovery.start().catch(() => {}), CALM);
  }

  /** @param {number} port where this device receives, or 0 */
  announceAt(port) {
    return this.#discovery.announceAt(port);
  }

  /**
   * @param {string} id of a Device
   * @returns {Neighbour}
   */
  neighbour(id) {
    const found = this.#discovery.neighbours.find((one) => this.#idOf(one) === id);
    if (!found) throw new Error('That device is no longer near.');
    return found;
  }

  /**
   * The device with an identity, if it is near and to be trusted with more than its name.
   * @param {string} identity
   * @returns {Neighbour}
   */
  withIdentity(identity) {
    const found = this.#discovery.neighbours
      .find(({ id, key }) => id === identity && this.#trust.of(id, key) !== 'changed');
    if (!found) throw new Error('That device is not near at the moment.');
    return found;
  }

  async #refresh() {
    const { neighbours } = this.#discovery;
    await Promise.all(neighbours.map(async ({ key }) => {
      const name = hex(key);
      if (!this.#fingerprints.has(name)) this.#fingerprints.set(name, await fingerprintOf(key));
    }));
    this.#list = neighbours.map((one) => ({ id: this.#idOf(one), name: one.name,
      fingerprint: this.#fingerprints.get(hex(one.key)) ?? '', trust: this.#trust.of(one.id, one.key) }))
      .sort((left, right) => left.name.localeCompare(right.name));
    this.dispatchEvent(new Event('change'));
  }

  /** @param {Neighbour} neighbour */
  #idOf({ id, key }) {
    return `${id}/${hex(key)}`;
  }
}
