// Finds the devices on the networks that this one is on, and tells them of it.
//
// A socket an interface and an address family: announcements leave through each, and a device that
// several of them hear is one device with several addresses.

import { networkInterfaces, UdpSocket } from '../engine/sockets.js';
import { decodeAnnouncement, encodeAnnouncement } from './announcement.js';
import { Budget } from './budget.js';
import { hex } from './bytes.js';
import { Limit, Time } from './limits.js';

const PORT = 45457;
/** Administratively scoped to the organisation's site (RFC 2365), and link-local (RFC 4291). */
const GROUPS = [
  { any: '0.0.0.0', group: '239.255.77.66', isOf: (/** @type {string} */ address) => address.includes('.') },
  { any: '::', group: 'ff02::b4e7', isOf: (/** @type {string} */ address) => address.startsWith('fe80:') },
];

/** `addresses`: with the port that was announced from there, the latest last.
 *  @typedef {{ id: string, key: Uint8Array, name: string, addresses: Map<string, number>,
 *              seen: number }} Neighbour */
/** @typedef {{ socket: UdpSocket, group: string }} Outlet */

/** Dispatches “change”. Its own device is known by `self.id`, and left out. */
export class Discovery extends EventTarget {
  #self;
  /** @type {Outlet[]} */
  #outlets = [];
  /** @type {Map<string, Neighbour>} by identity and key */
  #neighbours = new Map();
  #port = 0;
  #isRunning = false;
  #round = 0;
  #answered = -Infinity;
  /** @type {ReturnType<typeof setTimeout> | undefined} */
  #answer;
  #budget = new Budget(Limit.announcementsPerSecond, Limit.devices);
  /** @type {ReturnType<typeof setTimeout> | undefined} */
  #timer;

  /** @param {import('./handshake.js').Party} self */
  constructor(self) {
    super();
    this.#self = self;
  }

  /** @returns {Neighbour[]} */
  get neighbours() {
    return [...this.#neighbours.values()];
  }

  /**
   * Begins, or begins anew on the interfaces that there are now. What was found stays until it is
   * not heard of any more.
   */
  async start() {
    this.#isRunning = true;
    const round = ++this.#round;
    clearTimeout(this.#timer);
    const before = this.#outlets;
    this.#outlets = [];
    await Promise.all(before.map(({ socket }) => socket.close().catch(() => {})));
    const opened = await openOutlets();
    if (round !== this.#round) {
      opened.forEach(({ socket }) => socket.close().catch(() => {}));
      return;
    }
    this.#outlets = opened;
    for (const outlet of opened) this.#listen(outlet);
    // More than once: datagrams get lost.
    for (const delay of Time.queries) setTimeout(() => this.#ask(round), delay);
    this.#tick(round);
  }

  async stop() {
    await this.announceAt(0);
    this.#isRunning = false;
    ++this.#round;
    clearTimeout(this.#timer);
    clearTimeout(this.#answer);
    for (const { socket } of this.#outlets.splice(0)) socket.close().catch(() => {});
  }

  /**
   * Tells everybody where this device receives: the port, or 0 where it no longer does.
   * @param {number} port
   */
  async announceAt(port) {
    const before = this.#port;
    this.#port = port;
    if (port !== 0) await this.#announce();
    else if (before !== 0) await this.#send({ kind: 'bye', port: before, ...this.#self });
  }

  #announce() {
    if (this.#port === 0) return Promise.resolve();
    return this.#send({ kind: 'here', port: this.#port, ...this.#self });
  }

  /** @param {number} round */
  #ask(round) {
    if (round === this.#round) this.#send({ kind: 'query' });
  }

  /** @param {number} round */
  #tick(round) {
    if (round !== this.#round) return;
    this.#announce();
    this.#expire(performance.now() - Time.expire);
    // Each device a little differently, so that they do not all speak at once.
    const pause = Time.announce * (0.8 + 0.4 * Math.random());
    this.#timer = setTimeout(() => this.#tick(round), pause);
  }

  /** @param {import('./announcement.js').Announcement} announcement */
  async #send(announcement) {
    const bytes = encodeAnnouncement(announcement);
    // An interface that is going away fails; the recovery request follows.
    await Promise.all(this.#outlets.map(({ socket, group }) =>
      socket.send(bytes, group, PORT).catch(() => {})));
  }

  /** @param {Outlet} outlet */
  async #listen({ socket }) {
    try {
      for (;;) {
        const { bytes, address } = await socket.receive();
        if (this.#budget.allows(address, performance.now())) this.#hear(bytes, address);
      }
    } catch {
      // Closed, by us or with its interface.
    }
  }

  /**
   * @param {Uint8Array} datagram
   * @param {string} address
   */
  #hear(datagram, address) {
    const said = decodeAnnouncement(datagram);
    if (!said) return;
    if (said.kind === 'query') {
      this.#answerQuery();
    } else if (said.id !== this.#self.id) {
      const name = `${said.id} ${hex(said.key)}`;
      if (said.kind === 'bye') this.#forget(name, address);
      else this.#remember(name, said, address);
    }
  }

  #answerQuery() {
    if (this.#answer !== undefined) return;
    const wait = Math.max(0, this.#answered + Time.answerAgain - performance.now());
    this.#answer = setTimeout(() => {
      this.#answer = undefined;
      this.#answered = performance.now();
      this.#announce();
    }, wait);
  }

  /**
   * @param {string} mapKey
   * @param {{ id: string, key: Uint8Array, name: string, port: number }} said
   * @param {string} address
   */
  #remember(mapKey, said, address) {
    const now = performance.now();
    const known = this.#neighbours.get(mapKey);
    if (!known && this.#neighbours.size >= Limit.devices) return;
    const { id, key, name, port } = said;
    // What is said of one address changes nothing at the others: anybody can say it.
    const addresses = known?.addresses ?? new Map();
    addresses.delete(address);
    addresses.set(address, port);
    if (addresses.size > 8) addresses.delete(addresses.keys().next().value);
    this.#neighbours.set(mapKey, { id, key, name, addresses, seen: now });
    if (!known || known.name !== name) this.#changed();
  }

  /**
   * A farewell counts only from where the device was heard.
   * @param {string} mapKey
   * @param {string} address
   */
  #forget(mapKey, address) {
    if (!this.#neighbours.get(mapKey)?.addresses.has(address)) return;
    this.#neighbours.delete(mapKey);
    this.#changed();
  }

  /** @param {number} before */
  #expire(before) {
    const expired = [...this.#neighbours].filter(([, { seen }]) => seen < before);
    for (const [mapKey] of expired) this.#neighbours.delete(mapKey);
    if (expired.length > 0) this.#changed();
  }

  #changed() {
    if (this.#isRunning) this.dispatchEvent(new Event('change'));
  }
}

/**
 * Those that open: an interface without the one family, or without multicast, is no failure.
 * @returns {Promise<Outlet[]>}
 */
async function openOutlets() {
  const interfaces = (await networkInterfaces()).filter(({ canMulticast }) => canMulticast);
  const outward = interfaces.filter(({ isLoopback }) => !isLoopback);
  const chosen = outward.length > 0 ? outward : await networkInterfaces();
  const wanted = chosen.flatMap(({ name, addresses }) =>
    GROUPS.filter(({ isOf }) => addresses.some(({ address }) => isOf(address)))
      .map(({ any, group }) => ({ name, any, group })));
  const opened = await Promise.allSettled(wanted.map(async ({ name, any, group }) => {
    const socket = await UdpSocket.bind(any, PORT, { isShared: true });
    try {
      await socket.join(group, name);
    } catch (error) {
      socket.close();
      throw error;
    }
    return { socket, group };
  }));
  return opened.flatMap((result) => (result.status === 'fulfilled' ? [result.value] : []));
}
