// The devices that the person can choose from: those that discovery hears, and what is known of
// their keys.

import { fingerprintOf, hex } from '../protocol/bytes.js';
import { byName } from '../text/locale.js';
import { words } from '../text/words.js';
import { Discovery } from '../protocol/discovery.js';
import { DEFAULT_PORT } from '../protocol/endpoint.js';

/** @typedef {import('./types.js').Device} Device */
/** @typedef {import('../protocol/discovery.js').Neighbour} Neighbour */

/** Recovery requests come in bursts. */
const CALM = 250;

/** In milliseconds: how long a proof holds, and the pause after an attempt that failed. */
const PROOF_HOLDS = 60_000;
const PROVE_AGAIN = 5000;
const SOON = 1000;

/** Dispatches “change”. */
export class Devices extends EventTarget {
  #trust;
  #endpoint;
  #discovery;
  /** @type {Map<string, string>} fingerprints by key */
  #fingerprints = new Map();
  /** @type {Device[]} */
  #list = [];
  /** @type {ReturnType<typeof setTimeout> | undefined} */
  #restart;
  /** When the proof of a device was last asked for and which name it announced then, by its id.
   *  @type {Map<string, { at: number, name: string }>} */
  #asked = new Map();
  /** @type {ReturnType<typeof setTimeout> | undefined} */
  #proving;
  #isRunning = false;

  /**
   * @param {import('../protocol/handshake.js').Party} self
   * @param {import('./trust.js').Trust} trust
   * @param {import('../protocol/endpoint.js').Endpoint} endpoint
   */
  constructor(self, trust, endpoint) {
    super();
    this.#trust = trust;
    this.#endpoint = endpoint;
    this.#discovery = new Discovery(self, ({ id, key }) => trust.of(id, key) === 'trusted');
    this.#discovery.addEventListener('change', () => this.#refresh());
    trust.addEventListener('change', () => this.#refresh());
  }

  get list() {
    return this.#list;
  }

  /** Whether there is a network on which devices could be found. */
  get hasNetwork() {
    return this.#discovery.hasNetwork;
  }

  start() {
    this.#isRunning = true;
    this.#proveAll();
    return this.#discovery.start();
  }

  /** Says that this device leaves. */
  stop() {
    this.#isRunning = false;
    clearTimeout(this.#proving);
    return this.#discovery.stop();
  }

  /**
   * Looks for a device where announcements do not get through.
   * @param {string} text an address, with “:” and a port where it is not the usual one
   */
  async reach(text) {
    const { address, port } = addressIn(text);
    const party = await this.#endpoint.whoIsAt(address, port);
    this.#discovery.keep(party, address, port);
    this.#discovery.prove(party, address);
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
    if (!found) throw new Error(words('device.gone'));
    return found;
  }

  /**
   * The device with an identity, if it is near and to be trusted with more than its name.
   * @param {string} identity
   * @returns {Neighbour}
   */
  withIdentity(identity) {
    const found = this.#discovery.neighbours.find(
      ({ id, key }) => id === identity && this.#trust.of(id, key) !== 'changed',
    );
    if (!found) throw new Error(words('device.notNear'));
    return found;
  }

  async #refresh() {
    const { neighbours } = this.#discovery;
    await Promise.all(
      neighbours.map(async ({ key }) => {
        const name = hex(key);
        if (!this.#fingerprints.has(name)) this.#fingerprints.set(name, await fingerprintOf(key));
      }),
    );
    this.#list = neighbours
      .map((one) => ({
        id: this.#idOf(one),
        key: hex(one.key),
        name: this.#trust.nameOf(one),
        fingerprint: this.#fingerprints.get(hex(one.key)) ?? '',
        trust: this.#standingOf(one),
      }))
      .sort(
        (left, right) =>
          Number(left.trust !== 'trusted') - Number(right.trust !== 'trusted') ||
          byName(left.name, right.name),
      );
    this.dispatchEvent(new Event('change'));
    this.#proveAll();
  }

  /**
   * Everybody can announce a known identity and key, so a known device counts as such once it has
   * proven the key.
   * @param {Neighbour} neighbour
   * @returns {Device['trust']}
   */
  #standingOf({ id, key, addresses }) {
    const standing = this.#trust.of(id, key);
    if (standing !== 'trusted') return standing;
    const after = performance.now() - 2 * PROOF_HOLDS;
    return [...addresses.values()].some(({ proven }) => proven > after) ? 'trusted' : 'unproven';
  }

  /** Has known devices prove their keys, and sleeps until one has to do so again. */
  #proveAll() {
    clearTimeout(this.#proving);
    if (!this.#isRunning) return;
    const now = performance.now();
    let next = Infinity;
    for (const one of this.#discovery.neighbours) {
      if (this.#trust.of(one.id, one.key) !== 'trusted') continue;
      const proven = Math.max(...[...one.addresses.values()].map((place) => place.proven));
      const asked = this.#asked.get(this.#idOf(one)) ?? { at: -Infinity, name: one.name };
      // A new name is kept once the device has proven its key under it.
      const due = asked.name === one.name ? proven + PROOF_HOLDS : -Infinity;
      const when = Math.max(due, asked.at + PROVE_AGAIN);
      if (when <= now) this.#prove(one);
      else next = Math.min(next, when);
    }
    if (next < Infinity) {
      this.#proving = setTimeout(() => this.#proveAll(), Math.max(next - now, SOON));
    }
  }

  /** @param {Neighbour} neighbour */
  async #prove(neighbour) {
    const id = this.#idOf(neighbour);
    const { name } = neighbour;
    this.#asked.set(id, { at: Infinity, name });
    try {
      const { address, party } = await this.#endpoint.locate(neighbour);
      this.#discovery.prove(neighbour, address);
      if (this.#trust.of(party.id, party.key) === 'trusted')
        await this.#trust.pin(party.id, party.key, party.name);
    } catch {
      await this.#refresh();
    } finally {
      this.#asked.set(id, { at: performance.now(), name });
      this.#proveAll();
    }
  }

  /** @param {Neighbour} neighbour */
  #idOf({ id, key }) {
    return `${id}/${hex(key)}`;
  }
}

/**
 * @param {string} text such as “192.168.1.20”, “192.168.1.20:45458”, “fe80::1%eth0” or “[fe80::1]:45458”
 */
function addressIn(text) {
  const trimmed = text.trim();
  const parts =
    /^\[([0-9a-f:.]+(?:%\w+)?)\](?::(\d{1,5}))?$/i.exec(trimmed) ??
    /^(\d{1,3}(?:\.\d{1,3}){3})(?::(\d{1,5}))?$/.exec(trimmed) ??
    /^([0-9a-f:.]*:[0-9a-f:.]+(?:%\w+)?)$/i.exec(trimmed);
  const port = Number(parts?.[2] ?? DEFAULT_PORT);
  if (!parts || port < 1 || port > 65_535) throw new Error(words('address.invalid'));
  return { address: parts[1], port };
}
