// Finds the devices on the networks that this one is on, and tells them of it.
//
// There is a socket for each interface and address family, and announcements leave through each. A device
// that is heard on several is one device with several addresses.

import { networkInterfaces, UdpSocket } from '../engine/sockets.js';
import { decodeAnnouncement, encodeAnnouncement } from './announcement.js';
import { Budget } from './budget.js';
import { Limit, Time } from './limits.js';
import { Neighbours } from './neighbours.js';

const PORT = 45457;
/** Administratively scoped to the organisation's site (RFC 2365), and link-local (RFC 4291). */
const GROUPS = [
  {
    any: '0.0.0.0',
    group: '239.255.77.66',
    isOf: (/** @type {string} */ address) => address.includes('.'),
  },
  {
    any: '::',
    group: 'ff02::b4e7',
    isOf: (/** @type {string} */ address) => address.startsWith('fe80:'),
  },
];

/** @typedef {import('./neighbours.js').Neighbour} Neighbour */
/** @typedef {{ socket: UdpSocket, group: string }} Outlet */
/** @typedef {import('../engine/sockets.js').NetworkInterface} NetworkInterface */

/** Dispatches “change”, ten times a second at most. Its own device is known by `self.id`, and left out. */
export class Discovery extends EventTarget {
  #self;
  /** @type {Outlet[]} */
  #outlets = [];
  #neighbours;
  #port = 0;
  #isRunning = false;
  #hasNetwork = true;
  #round = 0;
  #answered = -Infinity;
  /** @type {ReturnType<typeof setTimeout> | undefined} */
  #answer;
  #budget = new Budget(Limit.datagramsPerSource, Limit.datagrams);
  #shown = -Infinity;
  /** @type {ReturnType<typeof setTimeout> | undefined} */
  #showing;
  /** @type {ReturnType<typeof setTimeout> | undefined} */
  #expiring;

  /**
   * @param {import('./handshake.js').Party} self
   * @param {(identity: import('./neighbours.js').Identity) => boolean} isKnown
   */
  constructor(self, isKnown) {
    super();
    this.#self = self;
    this.#neighbours = new Neighbours(isKnown);
  }

  get neighbours() {
    return this.#neighbours.list;
  }

  /** Whether there is a network at all, with or without multicast. */
  get hasNetwork() {
    return this.#hasNetwork;
  }

  /**
   * A device that answered at an address that a person typed.
   * @param {import('./handshake.js').Party} party
   * @param {string} address
   * @param {number} port
   */
  keep(party, address, port) {
    this.#neighbours.keep({ ...party, port }, address);
    this.#changed();
  }

  /**
   * A device has proven its key at an address.
   * @param {import('./neighbours.js').Identity} identity
   * @param {string} address
   */
  prove(identity, address) {
    this.#neighbours.prove(identity, address, performance.now());
    this.#changed();
  }

  /**
   * Begins, or begins anew on the present interfaces. Known neighbours stay until they are no longer
   * heard.
   */
  async start() {
    this.#isRunning = true;
    const round = ++this.#round;
    const before = this.#outlets;
    this.#outlets = [];
    await Promise.all(before.map(({ socket }) => socket.close().catch(() => {})));
    const interfaces = await networkInterfaces();
    const opened = await openOutlets(interfaces);
    if (round !== this.#round) {
      opened.forEach(({ socket }) => socket.close().catch(() => {}));
      return;
    }
    this.#outlets = opened;
    this.#hasNetwork = interfaces.some(
      ({ isLoopback, addresses }) => !isLoopback && addresses.length > 0,
    );
    this.#changed();
    await this.#prepareAnnouncements();
    for (const outlet of opened) this.#listen(outlet);
    // More than once: datagrams get lost.
    for (const delay of Time.queries) setTimeout(() => this.#ask(round), delay);
    this.#announce();
    this.#expireLater();
  }

  async stop() {
    await this.announceAt(0);
    this.#isRunning = false;
    ++this.#round;
    clearTimeout(this.#expiring);
    this.#expiring = undefined;
    clearTimeout(this.#answer);
    clearTimeout(this.#showing);
    this.#showing = undefined;
    for (const { socket } of this.#outlets.splice(0)) socket.close().catch(() => {});
  }

  /**
   * Tells everybody where this device receives: the port, or 0 where it no longer does.
   * @param {number} port
   */
  async announceAt(port) {
    const before = this.#port;
    this.#port = port;
    await this.#prepareAnnouncements();
    if (port !== 0) await this.#announce();
    else if (before !== 0) await this.#send({ kind: 'bye', port: before, ...this.#self });
  }

  /** The engine repeats “here”, and sends “bye” however the program ends. */
  async #prepareAnnouncements() {
    const port = this.#port;
    const said = (/** @type {'here' | 'bye'} */ kind) =>
      port === 0 ? new Uint8Array(0) : encodeAnnouncement({ kind, port, ...this.#self });
    const bye = said('bye');
    const here = said('here');
    const datagrams = this.#outlets.map(({ socket, group }) => {
      return { socket, bytes: here, address: group, port: PORT };
    });
    await Promise.all([
      UdpSocket.repeat(port === 0 ? [] : datagrams, Time.announce).catch(() => {}),
      ...this.#outlets.map(({ socket, group }) =>
        socket.setFarewell(bye, group, PORT).catch(() => {}),
      ),
    ]);
  }

  #announce() {
    if (this.#port === 0) return Promise.resolve();
    return this.#send({ kind: 'here', port: this.#port, ...this.#self });
  }

  /** @param {number} round */
  #ask(round) {
    if (round === this.#round) this.#send({ kind: 'query' });
  }

  /** Drops neighbours that were not heard again in time; runs no timer while there are none. */
  #expireLater() {
    if (!this.#isRunning || this.#expiring !== undefined) return;
    const wait = this.#neighbours.nextExpiry - performance.now();
    if (wait === Infinity) return;
    this.#expiring = setTimeout(
      () => {
        this.#expiring = undefined;
        if (this.#neighbours.expire(performance.now())) this.#changed();
        this.#expireLater();
      },
      Math.max(wait, Time.expireAgain),
    );
  }

  /** @param {import('./announcement.js').Announcement} announcement */
  async #send(announcement) {
    const bytes = encodeAnnouncement(announcement);
    // An interface that is going away fails; the recovery request follows.
    await Promise.all(
      this.#outlets.map(({ socket, group }) => socket.send(bytes, group, PORT).catch(() => {})),
    );
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
      const now = performance.now();
      if (said.kind === 'bye') {
        this.#neighbours.bye(said, address, now);
        clearTimeout(this.#expiring);
        this.#expiring = undefined;
      } else if (this.#neighbours.hear(said, address, now)) {
        this.#changed();
      }
      this.#expireLater();
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

  #changed() {
    if (!this.#isRunning || this.#showing !== undefined) return;
    const wait = Math.max(0, this.#shown + Time.showAgain - performance.now());
    this.#showing = setTimeout(() => {
      this.#showing = undefined;
      this.#shown = performance.now();
      this.dispatchEvent(new Event('change'));
    }, wait);
  }
}

/**
 * The sockets that open: an interface without one of the families, or without multicast, is not an error.
 * @param {NetworkInterface[]} interfaces
 * @returns {Promise<Outlet[]>}
 */
async function openOutlets(interfaces) {
  const outward = interfaces.filter(({ canMulticast, isLoopback }) => canMulticast && !isLoopback);
  const chosen = outward.length > 0 ? outward : interfaces;
  const wanted = chosen.flatMap(({ name, addresses }) =>
    GROUPS.filter(({ isOf }) => addresses.some(({ address }) => isOf(address))).map(
      ({ any, group }) => ({ name, any, group }),
    ),
  );
  const opened = await Promise.allSettled(
    wanted.map(async ({ name, any, group }) => {
      const socket = await UdpSocket.bind(any, PORT, { isShared: true });
      try {
        await socket.join(group, name);
      } catch (error) {
        socket.close();
        throw error;
      }
      return { socket, group };
    }),
  );
  return opened.flatMap((result) => (result.status === 'fulfilled' ? [result.value] : []));
}
