// Where connections begin: the port that others call, and calls to others.

import { TcpConnection, TcpListener } from '../engine/sockets.js';
import { platform } from '../platform.js';
import { equalBytes, hex } from './bytes.js';
import { Conversation } from './conversation.js';
import { TransferError } from './errors.js';
import { FrameStream } from './frames.js';
import { answer, call, refuse } from './handshake.js';
import { Limit, Time } from './limits.js';
import { SealedStream } from './sealed_stream.js';

/** @typedef {import('./handshake.js').Party} Party */
/** @typedef {import('./handshake.js').Session} Session */
/** @typedef {{ conversation: Conversation, session: Session }} Contact */

/** Ends of a call after which the device may still be found at another of its addresses. */
const ELSEWHERE = new Set(['unreachable', 'lost', 'no-answer', 'not-understood', 'other-key']);

export class Endpoint {
  #self;
  #onContact;
  /** @type {TcpListener | null} */
  #listener = null;
  /** @type {Map<FrameStream, string>} the callers' addresses */
  #callers = new Map();
  /** @type {Map<string, Promise<import('./sealed_stream.js').Cipher>>} */
  #ciphers = new Map();

  /**
   * @param {Party} self
   * @param {(contact: Contact) => Promise<void>} onContact with each caller; the connection ends
   *     when it is done
   */
  constructor(self, onContact) {
    this.#self = self;
    this.#onContact = onContact;
  }

  /** @returns {Promise<number>} the port */
  async open() {
    if (!this.#listener) {
      this.#listener = await listenOnAll();
      this.#accept(this.#listener);
    }
    return this.#listener.port;
  }

  /** Takes no more calls; those that were taken go on. */
  async close() {
    const listener = this.#listener;
    this.#listener = null;
    await listener?.close().catch(() => {});
  }

  /**
   * Calls a device at the first of its addresses where it is the one that answers.
   * @param {Pick<import('./discovery.js').Neighbour, 'addresses' | 'key'>} neighbour
   * @returns {Promise<Contact>}
   */
  async connect({ addresses, key }) {
    let failure = new TransferError('unreachable');
    for (const [address, port] of [...addresses].reverse()) {
      try {
        return await this.#connectAt(address, port, key);
      } catch (error) {
        failure = TransferError.of(error, 'unreachable');
        if (!ELSEWHERE.has(failure.code)) break;
      }
    }
    throw failure;
  }

  /**
   * @param {string} address
   * @param {number} port
   * @param {Uint8Array} key
   */
  async #connectAt(address, port, key) {
    const connection = await TcpConnection.connect(address, port, Time.connect).catch(() => {
      throw new TransferError('unreachable');
    });
    const stream = new FrameStream(connection);
    try {
      const session = await call(stream, this.#self);
      if (!equalBytes(session.peer.key, key)) throw new TransferError('other-key');
      return await this.#contact(stream, session);
    } catch (error) {
      await stream.close();
      throw error;
    }
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
    const fromThere = [...this.#callers.values()].filter((peer) => peer === connection.peer).length;
    if (this.#callers.size >= Limit.connections || fromThere >= Limit.connectionsPerPeer) {
      await refuse(stream, 'busy');
      await stream.close();
      return;
    }
    this.#callers.set(stream, connection.peer);
    try {
      const contact = await this.#contact(stream, await answer(stream, this.#self));
      await this.#onContact(contact).finally(() => contact.conversation.close());
    } catch {
      // A stranger who made no sense, or left.
    } finally {
      this.#callers.delete(stream);
      await stream.close();
    }
  }

  /**
   * @param {FrameStream} stream
   * @param {Session} session
   * @returns {Promise<Contact>}
   */
  async #contact(stream, session) {
    const cipher = await this.#cipherWith(session.peer.key);
    return { conversation: new Conversation(new SealedStream(stream, cipher, session), stream), session };
  }

  /** @param {Uint8Array} key */
  #cipherWith(key) {
    const name = hex(key);
    let cipher = this.#ciphers.get(name);
    if (!cipher) {
      if (this.#ciphers.size >= Limit.devices) this.#ciphers.clear();
      cipher = platform.cryptoDeriveSharedKey(key).then((shared) => ({
        seal: (data) => platform.cryptoEncrypt(shared, data),
        open: (data) => platform.cryptoDecrypt(shared, data),
      }));
      cipher.catch(() => this.#ciphers.delete(name));
      this.#ciphers.set(name, cipher);
    }
    return cipher;
  }
}

/** In either family, where there are both. */
async function listenOnAll() {
  try {
    return await TcpListener.listen('::', 0);
  } catch {
    return TcpListener.listen('0.0.0.0', 0);
  }
}
