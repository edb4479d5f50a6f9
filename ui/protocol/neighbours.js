// The devices that were heard, with their addresses. Announcements can be forged, so one from an address
// changes nothing at the other addresses, and an unknown device never takes the place of a known one.

import { hex } from './bytes.js';
import { Limit, Time } from './limits.js';

/** `until`: when it is dropped unless it is heard again. `proven`: when the device's key was last
 *  proven there, in milliseconds of the same clock; -Infinity for never.
 *  @typedef {{ port: number, until: number, proven: number }} Place */
/** @typedef {{ id: string, key: Uint8Array, name: string,
 *              addresses: Map<string, Place> }} Neighbour */
/** @typedef {{ id: string, key: Uint8Array }} Identity */
/** @typedef {Identity & { name: string, port: number }} Heard */

/** @param {Identity} identity */
const nameOf = ({ id, key }) => `${id} ${hex(key)}`;

export class Neighbours {
  #isKnown;
  /** @type {Map<string, Neighbour>} */
  #found = new Map();

  /** @param {(identity: Identity) => boolean} isKnown */
  constructor(isKnown) {
    this.#isKnown = isKnown;
  }

  /** @returns {Neighbour[]} */
  get list() {
    return [...this.#found.values()];
  }

  /**
   * Returns whether that changes what is to be shown.
   * @param {Heard} said
   * @param {string} address
   * @param {number} now
   */
  hear(said, address, now) {
    return this.#place(said, address, now + Time.expire);
  }

  /**
   * An address that was typed stays. Returns whether that changes what is to be shown.
   * @param {Heard} found
   * @param {string} address
   */
  keep(found, address) {
    return this.#place(found, address, Infinity);
  }

  /**
   * A farewell concerns the address that it comes from. It may be forged, so the device has the
   * time to be heard again.
   * @param {Identity} identity
   * @param {string} address
   * @param {number} now
   */
  bye(identity, address, now) {
    const place = this.#found.get(nameOf(identity))?.addresses.get(address);
    if (place) place.until = Math.min(place.until, now + Time.expireAfterBye);
  }

  /**
   * The device has proven its key at an address.
   * @param {Identity} identity
   * @param {string} address
   * @param {number} now
   */
  prove(identity, address, now) {
    const place = this.#found.get(nameOf(identity))?.addresses.get(address);
    if (place) place.proven = now;
  }

  /**
   * Returns whether that changes what is to be shown.
   * @param {number} now
   */
  expire(now) {
    const before = this.#found.size;
    for (const [name, { addresses }] of this.#found) {
      for (const [address, { until }] of addresses) if (until <= now) addresses.delete(address);
      if (addresses.size === 0) this.#found.delete(name);
    }
    return this.#found.size < before;
  }

  /** When the next address is dropped unless it is heard again; Infinity where none is. */
  get nextExpiry() {
    const all = this.list.flatMap(({ addresses }) => [...addresses.values()]);
    return Math.min(...all.map(({ until }) => until));
  }

  /**
   * @param {Heard} heard
   * @param {string} address
   * @param {number} until
   */
  #place(heard, address, until) {
    const { id, key, port } = heard;
    const name = nameOf(heard);
    const found = this.#found.get(name);
    if (!found && !this.#hasRoomFor(heard, address)) return false;
    const addresses = found?.addresses ?? new Map();
    const before = addresses.get(address);
    if (!before && addresses.size >= Limit.addresses) addresses.delete(leastProven(addresses));
    const isSamePort = before?.port === port;
    addresses.set(address, {
      port,
      until: Math.max(until, before?.until === Infinity ? Infinity : 0),
      proven: before && isSamePort ? before.proven : -Infinity,
    });
    this.#found.set(name, { id, key, name: heard.name, addresses });
    return !found || found.name !== heard.name;
  }

  /**
   * @param {Identity} identity
   * @param {string} address
   */
  #hasRoomFor(identity, address) {
    if (this.#isKnown(identity)) return true;
    const strangers = this.list.filter((one) => !this.#isKnown(one));
    const fromThere = strangers.filter(({ addresses }) => addresses.has(address)).length;
    return strangers.length < Limit.devices && fromThere < Limit.identitiesPerSource;
  }
}

/**
 * The address to drop: a random one of those that were never proven, so that an attacker cannot keep the
 * right one out by the order of announcements.
 * @param {Map<string, Place>} addresses
 */
function leastProven(addresses) {
  const all = [...addresses].sort(([, left], [, right]) => left.proven - right.proven);
  const unproven = all.filter(([, { proven }]) => proven === -Infinity);
  const candidates = unproven.length > 0 ? unproven : all.slice(0, 1);
  return candidates[Math.floor(Math.random() * candidates.length)][0];
}
