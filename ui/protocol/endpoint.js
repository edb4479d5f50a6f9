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
    this.#listener ??= await TcpListener.listen('::', 0);
    this.#accept(this.#listener);
    return this.#listener.port;
  }

  /** Takes no more calls; those that were taken go on. */
  async close() {
    await this.#listener?.close().catch(() => {});
    this.#listener = null;
  }

  /**
   * Calls a device at the first of its addresses that answers.
   * @param {import('./discovery.js').Neighbour} neighbour
   * @returns {Promise<Contact>}
   */
  async connect({ addresses, port, key }) {
    const stream = new FrameStream(await firstToAnswer([...addresses.keys()].reverse(), port));
    try {
      const session = await call(stream, this.#self);
      if (!equalBytes(session.peer.key, key)) throw new TransferError('other-key');
      return await this.#contact(stream, session);
    } catch (error) {
      await stream.close();
      throw TransferError.of(error, 'unreachable');
    }
  }

  /** @param {TcpListener} listener */
  async #accept(listener) {
    try {
      for (;;) this.#serve(await listener.accept());
    } catch {
      // Closed.
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

/**
 * @param {string[]} addresses
 * @param {number} port
 */
async function firstToAnswer(addresses, port) {
  for (const address of addresses) {
    try {
      return await TcpConnection.connect(address, port, Time.connect);
    } catch {
      // The next one.
    }
  }
  throw new TransferError('unreachable');
}
