// Accepts connections from other devices and makes connections to them.

import { TcpConnection, TcpListener } from '../engine/sockets.js';
import { platform } from '../platform.js';
import { equalBytes } from './bytes.js';
import { ConnectionSlots } from './connection_slots.js';
import { Conversation } from './conversation.js';
import { TransferError } from './errors.js';
import { FrameStream, within } from './frames.js';
import { answer, call, probe, refuse } from './handshake.js';
import { Time } from './limits.js';

/** The ports that a firewall's rule can name, and any other where both are taken. */
const PORTS = [45457, 45458, 0];
export const DEFAULT_PORT = PORTS[0];

/** @typedef {import('./handshake.js').Party} Party */
/** @typedef {import('./handshake.js').Session} Session */
/** @typedef {import('./neighbours.js').Neighbour} Neighbour */
/** @typedef {{ conversation: Conversation, session: Session, address: string }} Contact */

/** @type {import('./handshake.js').LastingKey} */
export const lastingKey = {
  agree: (publicKey) => platform.cryptoDeriveSharedKey(publicKey),
  seal: (key, data) => platform.cryptoEncrypt(key, data),
  open: (key, data) => platform.cryptoDecrypt(key, data),
};

export class Endpoint {
  #self;
  #isKnown;
  #onContact;
  #slots = new ConnectionSlots();
  /** @type {TcpListener | null} */
  #listener = null;

  /**
   * @param {Party} self
   * @param {(peer: Party) => boolean} isKnown
   * @param {(contact: Contact) => Promise<void>} onContact with each caller; the connection ends
   *     when it is done
   */
  constructor(self, isKnown, onContact) {
    this.#self = self;
    this.#isKnown = isKnown;
    this.#onContact = onContact;
  }

  /** @returns {Promise<number>} the port */
  async open() {
    if (!this.#listener) {
      this.#listener = await listen();
      this.#accept(this.#listener);
    }
    return this.#listener.port;
  }

  /** Accepts no more connections; those that were accepted go on. */
  async close() {
    const listener = this.#listener;
    this.#listener = null;
    await listener?.close().catch(() => {});
  }

  /**
   * Calls a device at all of its addresses, and returns the first where it proves its key.
   * @param {Pick<Neighbour, 'addresses' | 'key'>} neighbour
   * @returns {Promise<Contact>}
   */
  connect({ addresses, key }) {
    const isIt = (/** @type {Party} */ peer) => equalBytes(peer.key, key);
    return firstOf(
      addresses,
      (address, port, isStillWanted) =>
        calling(address, port, async (stream) => {
          const session = await call(stream, this.#self, lastingKey, (peer) => {
            return isIt(peer) && isStillWanted();
          });
          return { ...(await contactOf(stream, session)), address };
        }),
      ({ conversation }) => conversation.close(),
    );
  }

  /**
   * The first address where a device proves its key, and what it says of itself there. Says nothing of
   * this one.
   * @param {Pick<Neighbour, 'addresses' | 'key'>} neighbour
   * @returns {Promise<{ address: string, party: Party }>}
   */
  locate({ addresses, key }) {
    return firstOf(
      addresses,
      async (address, port) => {
        const party = await this.whoIsAt(address, port);
        if (!equalBytes(party.key, key)) throw new TransferError('other-key');
        return { address, party };
      },
      () => {},
    );
  }

  /**
   * Who proves their key at an address.
   * @param {string} address
   * @param {number} port
   * @returns {Promise<Party>}
   */
  whoIsAt(address, port) {
    return calling(address, port, async (stream) => {
      const peer = await probe(stream, lastingKey);
      await stream.close();
      return peer;
    });
  }

  /** @param {TcpListener} listener */
  async #accept(listener) {
    while (this.#listener === listener) {
      try {
        this.#serve(await listener.accept());
      } catch {
        // Closed, or there is no room for one more connection just now.
        await new Promise((resolve) => setTimeout(resolve, Time.listenAgain));
      }
    }
  }

  /** @param {TcpConnection} connection */
  async #serve(connection) {
    const stream = new FrameStream(connection);
    try {
      if (this.#slots.arrive(stream)) await this.#meet(stream);
      else await refuse(stream, 'busy');
    } catch {
      // The handshake failed, or the other side left.
    } finally {
      this.#slots.leave(stream);
      await stream.close();
    }
  }

  /** @param {FrameStream} stream */
  async #meet(stream) {
    const shaking = answer(stream, this.#self, lastingKey);
    const session = await within(shaking, Time.handshake, stream, 'no-answer');
    this.#slots.leave(stream);
    const contact = await contactOf(stream, session);
    const giveBack = this.#slots.take(this.#isKnown(session.peer));
    if (!giveBack) return contact.conversation.close('busy');
    try {
      await this.#onContact({ ...contact, address: stream.peer });
    } finally {
      giveBack();
      await contact.conversation.close();
    }
  }
}

/**
 * @param {FrameStream} stream
 * @param {Session} session
 */
async function contactOf(stream, session) {
  return { conversation: new Conversation(await stream.protect(session.keys)), session };
}

/**
 * Connects, and closes the connection where the work on it fails or takes too long.
 * @template T
 * @param {string} address
 * @param {number} port
 * @param {(stream: FrameStream) => Promise<T>} work
 * @returns {Promise<T>}
 */
async function calling(address, port, work) {
  const connection = await TcpConnection.connect(address, port, Time.connect).catch(() => {
    throw new TransferError('unreachable');
  });
  const stream = new FrameStream(connection);
  try {
    return await within(work(stream), Time.handshake, stream, 'no-answer');
  } catch (error) {
    await stream.close();
    throw TransferError.of(error, 'unreachable');
  }
}

/**
 * Tries all addresses, one shortly after the other, and returns what the first gives that succeeds.
 * An address that somebody else announced, and where nobody answers, therefore delays only briefly.
 * @template T
 * @param {Neighbour['addresses']} addresses
 * @param {(address: string, port: number, isStillWanted: () => boolean) => Promise<T>} attempt
 * @param {(result: T) => void} discard what a later attempt gives
 * @returns {Promise<T>}
 */
function firstOf(addresses, attempt, discard) {
  // Where the key was proven last, then the latest that was heard.
  const places = [...addresses].reverse().sort(([, one], [, other]) => {
    return one.proven === other.proven ? 0 : other.proven - one.proven;
  });
  return new Promise((resolve, reject) => {
    let isOver = places.length === 0;
    let failed = 0;
    let failure = new TransferError('unreachable');
    if (isOver) reject(failure);
    const begin = (/** @type {number} */ at) => {
      if (isOver || at >= places.length) return;
      const [address, { port }] = places[at];
      let isNextBegun = false;
      const beginNext = () => {
        if (!isNextBegun) begin(at + 1);
        isNextBegun = true;
      };
      const timer = setTimeout(beginNext, Time.nextAddress);
      attempt(address, port, () => !isOver).then(
        (result) => {
          clearTimeout(timer);
          if (isOver) return discard(result);
          isOver = true;
          resolve(result);
        },
        (error) => {
          clearTimeout(timer);
          if (error.code !== 'unreachable') failure = error;
          if (++failed === places.length && !isOver) reject(failure);
          beginNext();
        },
      );
    };
    begin(0);
  });
}

/** The first port that is free, in either family where there are both. */
async function listen() {
  /** @type {unknown} */
  let failure;
  for (const port of PORTS) {
    for (const address of ['::', '0.0.0.0']) {
      try {
        return await TcpListener.listen(address, port);
      } catch (error) {
        failure = error;
      }
    }
  }
  throw failure;
}
