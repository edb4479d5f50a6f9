// Runs transfers, each to its end: sends to a device, and answers those that call.

import { TransferError } from '../protocol/errors.js';
import { beforeLong, greet, introduce } from '../protocol/introduction.js';
import { Limit } from '../protocol/limits.js';
import { totalSize } from '../protocol/manifest.js';
import { receiveAll, receiveOffer } from '../protocol/receive.js';
import { sendAll } from '../protocol/send.js';
import { nameOf, outgoing, topLevel } from './items.js';
import { Questions } from './questions.js';
import { isEnded } from './transfers.js';

/** @typedef {import('./transfers.js').Transfers} Transfers */
/** @typedef {import('../protocol/conversation.js').Conversation} Conversation */

export class Courier {
  #transfers;
  #trust;
  #questions = new Questions();
  /** @type {Map<string, Conversation | null>} by transfer; null until it is connected */
  #running = new Map();
  /** @type {Set<string>} the transfers that were cancelled here */
  #cancelled = new Set();

  /**
   * @param {Transfers} transfers
   * @param {import('./trust.js').Trust} trust
   */
  constructor(transfers, trust) {
    this.#transfers = transfers;
    this.#trust = trust;
  }

  get isBusy() {
    return this.#running.size > 0;
  }

  /**
   * Sends what the transfer names. Never throws: how it ended is in the transfer.
   * @param {import('./types.js').Transfer} transfer
   * @param {() => Promise<import('../protocol/endpoint.js').Contact>} connect
   */
  send({ id, items }, connect) {
    return this.#run(id, async () => {
      const entries = await outgoing(items);
      this.#transfers.change(id, { fileCount: fileCount(entries), bytesTotal: totalSize(entries) });
      const { conversation, session } = await connect();
      await this.#hold(id, conversation);
      if (!await greet(conversation, session, this.#trust)) {
        await introduce(conversation, session, this.#trust, (code) => this.#compare(id, code));
      }
      this.#transfers.change(id, { state: 'asking', code: null });
      await sendAll(conversation, entries, {
        onAccepted: () => this.#transfers.change(id, { state: 'active' }),
        onProgress: (bytes) => this.#transfers.advance(id, bytes),
      });
      this.#transfers.change(id, { state: 'complete', bytesDone: totalSize(entries) });
    });
  }

  /**
   * Serves a device that called.
   * @param {import('../protocol/endpoint.js').Contact} contact
   */
  async receive({ conversation, session }) {
    const { peer } = session;
    if (this.#trust.of(peer.id, peer.key) === 'changed') return conversation.close('new-key');
    const isKnown = await greet(conversation, session, this.#trust);
    // A device asks one thing at a time. From here to the transfer nothing else can come between.
    const isAsking = this.#transfers.list.some(({ deviceId, direction, state }) =>
      deviceId === peer.id && direction === 'receive' && state !== 'active' && !isEnded({ state }));
    if (isAsking || this.#questions.count >= Limit.questions) return conversation.close('busy');
    const { id } = this.#transfers.add({ direction: 'receive', deviceId: peer.id,
      deviceName: peer.name, name: `Something from ${peer.name}`, state: 'connecting' });
    await this.#run(id, async () => {
      await this.#hold(id, conversation);
      if (!isKnown) {
        await introduce(conversation, session, this.#trust, (code) => this.#compare(id, code));
      }
      const entries = await receiveOffer(conversation);
      const items = entries.map(({ kind, path, size }) =>
        ({ kind, size, name: path.slice(path.lastIndexOf('/') + 1), relativePath: path }));
      const offered = topLevel(items);
      this.#transfers.change(id, { state: 'asking', code: null, name: nameOf(items),
        fileCount: fileCount(entries), bytesTotal: totalSize(entries),
        offered: offered.slice(0, 5).map(({ name }) => name), offeredCount: offered.length });
      // The sender is silent until it is answered, so what comes first is its end or the content.
      const first = conversation.next();
      first.catch(() => {});
      const isWanted = await Promise.race([beforeLong(this.#questions.ask(id)), first.then(tooEarly)]);
      if (!isWanted) throw new TransferError('declined');
      this.#transfers.change(id, { state: 'active' });
      const result = await receiveAll(conversation, entries, first,
        (bytes) => this.#transfers.advance(id, bytes));
      this.#transfers.change(id, { ...result, state: 'complete', bytesDone: totalSize(entries) });
    });
    // Strangers who ring and run leave no trace.
    if (this.#trust.of(peer.id, peer.key) === 'new') this.#transfers.remove((one) => one.id === id);
  }

  /**
   * The person's answer to what the transfer asks.
   * @param {string} id
   * @param {boolean} answer
   */
  answer(id, answer) {
    this.#questions.answer(id, answer);
  }

  /** @param {string} id */
  async cancel(id) {
    if (!this.#running.has(id)) return;
    this.#cancelled.add(id);
    await this.#running.get(id)?.close('cancelled');
    this.#questions.answer(id, false);
  }

  /**
   * @param {string} id
   * @param {() => Promise<void>} work
   */
  async #run(id, work) {
    this.#running.set(id, null);
    let code;
    try {
      await work();
    } catch (error) {
      const reason = this.#cancelled.has(id) ? new TransferError('cancelled') :
        TransferError.of(error, 'not-saved');
      code = reason.code;
      this.#transfers.change(id, ended(reason));
    } finally {
      const conversation = this.#running.get(id);
      this.#questions.drop(id);
      this.#cancelled.delete(id);
      this.#running.delete(id);
      await conversation?.close(code);
    }
  }

  /**
   * @param {string} id
   * @param {Conversation} conversation
   */
  async #hold(id, conversation) {
    this.#running.set(id, conversation);
    if (this.#cancelled.has(id)) throw new TransferError('cancelled');
  }

  /**
   * @param {string} id
   * @param {string} code
   */
  async #compare(id, code) {
    this.#transfers.change(id, { state: 'confirming', code });
    return this.#questions.ask(id);
  }
}

/** @returns {never} */
function tooEarly() {
  throw new TransferError('not-understood');
}

/** @param {{ kind: string }[]} entries */
const fileCount = (entries) => entries.filter(({ kind }) => kind !== 'directory').length;

/**
 * @param {TransferError} reason
 * @returns {Partial<import('./types.js').Transfer>}
 */
function ended({ code, message }) {
  const over = { code: null, rate: 0, secondsLeft: null };
  if (code === 'cancelled' || code === 'cancelled-there') {
    return { ...over, state: 'cancelled', message: code === 'cancelled' ? null : message };
  }
  if (code === 'declined') return { ...over, state: 'declined', message: null };
  return { ...over, state: 'failed', message };
}
