// Runs transfers, each to its end: sends to a device, and answers those that call.

import { space } from '../engine/files.js';
import { mappedInSlices } from '../engine/slices.js';
import { hex } from '../protocol/bytes.js';
import { TransferError } from '../protocol/errors.js';
import { beforeLong, greet, introduce } from '../protocol/introduction.js';
import { fileCount, totalSize } from '../protocol/manifest.js';
import { receiveAll, receiveOffer } from '../protocol/receive.js';
import { scratchFolder, scratchName, TransferScratch } from '../protocol/scratch_area.js';
import { sendAll } from '../protocol/send.js';
import { isolated, plainFileName, plainPath } from '../text/foreign_text.js';
import { sizeText } from '../text/format.js';
import { words } from '../text/words.js';
import { contentFields } from './contents.js';
import { failureFields } from './outcomes.js';
import { Outgoings } from './outgoings.js';
import { QuestionGate } from './question_gate.js';
import { Questions } from './questions.js';
import { keepReceivedText } from './received.js';
import { Running } from './running.js';

/** @typedef {import('./types.js').Transfer} Transfer */
/** @typedef {import('./transfers.js').Transfers} Transfers */
/** @typedef {import('../protocol/conversation.js').Conversation} Conversation */
/** @typedef {import('../protocol/endpoint.js').Contact} Contact */

export class Courier {
  #transfers;
  #trust;
  #running;
  #questions = new Questions();
  #gate = new QuestionGate();

  /**
   * @param {Transfers} transfers
   * @param {import('./trust.js').Trust} trust
   */
  constructor(transfers, trust) {
    this.#transfers = transfers;
    this.#trust = trust;
    this.#running = new Running(transfers);
  }

  /**
   * Sends what the transfer names. Never throws: how it ended is in the transfer.
   * @param {import('./types.js').Transfer} transfer
   * @param {() => Promise<Contact>} connect
   */
  send({ id, items, number }, connect) {
    return this.#running.run(id, async (run) => {
      const offer = new Outgoings(items);
      const { conversation, session } = await connectedFor(offer, connect);
      run.hold(conversation);
      if (!(await greet(conversation, session, this.#trust))) {
        await introduce(conversation, session, this.#trust, (code) => this.#compare(id, code));
      }
      const late = await sendAll(conversation, number, offer.parts(), {
        onOffered: () => this.#transfers.change(id, { state: 'asking', code: null, ...offer.sum }),
        onAccepted: () => this.#transfers.change(id, { state: 'active' }),
        onProgress: (bytes) => this.#transfers.advance(id, bytes),
      });
      const { entries, failures } = offer;
      const failed = [
        ...failures,
        ...late.map(({ index, code }) => ({ item: entries[index].item, code })),
      ];
      if (failed.length === 0) return { state: 'complete', bytesDone: totalSize(entries) };
      const named = failed.map(({ item, code }) => ({ name: item.name, code }));
      // Trying again sends what failed.
      const left = [...new Set(failed.map(({ item }) => item))];
      return { state: 'failed', items: left, ...failureFields(named, offer.sum.fileCount) };
    });
  }

  /**
   * Serves a device that called.
   * @param {Contact} contact
   */
  async receive({ conversation, session, address }) {
    const { peer } = session;
    if (this.#trust.of(peer.id, peer.key) === 'changed') return conversation.close('new-key');
    const isKnown = await greet(conversation, session, this.#trust);
    const asker = { address, device: hex(peer.key), isKnown };
    if (!this.#gate.begin(asker, performance.now())) return conversation.close('busy');
    const deviceName = this.#trust.nameOf(peer);
    const { id } = this.#transfers.add({
      direction: 'receive',
      deviceId: peer.id,
      deviceName,
      name: words('status.calling', { device: isolated(deviceName) }),
      state: 'connecting',
      isStranger: !isKnown,
    });
    const endQuestion = () =>
      this.#gate.end(asker, this.#questions.wasAnswered(id), performance.now());
    await this.#running.run(id, async (run) => {
      run.hold(conversation);
      if (!isKnown) {
        await introduce(conversation, session, this.#trust, (code) => this.#compare(id, code));
      }
      // What is saved has the names that are shown.
      const { transfer, manifest, entries } = await receiveOffer(conversation, (entry) => ({
        ...entry,
        path: entry.kind === 'text' ? plainFileName(entry.path) : plainPath(entry.path),
      }));
      const scratch = await this.#scratchFor(id, await scratchName(peer.key, transfer));
      const { result, bytesTotal } = await this.#receiveFrom(
        id,
        conversation,
        { manifest, entries },
        scratch,
        (bytes) => isKnown && this.#trust.acceptsUnasked(peer.id, peer.key, bytes),
        endQuestion,
      );
      const kept = await keepReceivedText(result, deviceName);
      const failed = result.failures.map(({ index, code }) => ({
        name: entries[index].path,
        code,
      }));
      const fields = failureFields(failed, fileCount(entries));
      const isAnythingHere = kept.locations.length > 0 || kept.text !== null;
      const state = isAnythingHere || failed.length === 0 ? 'complete' : 'failed';
      return { ...kept, ...fields, state, bytesDone: bytesTotal };
    });
    endQuestion();
    this.#questions.drop(id);
    // Nothing is kept of strangers whose codes were not confirmed.
    if (this.#trust.of(peer.id, peer.key) === 'new') this.#transfers.remove((one) => one.id === id);
  }

  /**
   * Asks the person, and receives.
   * @param {string} id
   * @param {Conversation} conversation
   * @param {Pick<import('../protocol/receive.js').Offer, 'manifest' | 'entries'>} offer
   * @param {TransferScratch} scratch
   * @param {(bytes: number) => boolean} mayComeIn whether so much is accepted without a question
   * @param {() => void} onAnswered
   */
  async #receiveFrom(id, conversation, { manifest, entries }, scratch, mayComeIn, onAnswered) {
    const items = await mappedInSlices(entries, ({ kind, path, size }) => ({
      kind,
      name: path,
      size,
    }));
    const bytesTotal = totalSize(entries);
    const files = fileCount(entries);
    const fields = await contentFields(items);
    this.#transfers.change(id, { ...fields, fileCount: files, bytesTotal });
    // The sender is silent until it is answered, so what comes first is its end or the content.
    const first = conversation.arrival();
    first.catch(() => {});
    const message = await this.#lackOfSpace(bytesTotal);
    if (!scratch.wasAccepted(manifest) && (message || !mayComeIn(bytesTotal))) {
      this.#transfers.change(id, { state: 'asking', code: null, message });
      const isWanted = await Promise.race([
        beforeLong(this.#questions.ask(id)),
        first.then(tooEarly),
      ]);
      if (!isWanted) throw new TransferError('declined');
    }
    onAnswered();
    this.#transfers.change(id, { state: 'active', code: null, message: null });
    await scratch.accept(manifest);
    const result = await receiveAll(conversation, entries, scratch, first, (bytes) =>
      this.#transfers.advance(id, bytes),
    );
    return { result, bytesTotal };
  }

  /**
   * A transfer's part of the scratch area, once nothing else uses it: an earlier connection may not
   * have noticed yet that its sender has left.
   * @param {string} id
   * @param {string} name
   */
  async #scratchFor(id, name) {
    for (const { id: other, scratch, state } of this.#transfers.list) {
      if (scratch !== name || other === id) continue;
      await this.#running.lose(other);
      if (state !== 'complete') this.#transfers.remove((one) => one.id === other);
    }
    this.#transfers.change(id, { scratch: name });
    return TransferScratch.open(name);
  }

  /**
   * What to tell the person where what is offered does not fit on the disk.
   * @param {number} bytesTotal
   */
  async #lackOfSpace(bytesTotal) {
    const free = await space(await scratchFolder()).catch(() => Infinity);
    return bytesTotal > free ? words('space.lacking', { size: sizeText(free) }) : null;
  }

  /**
   * The person wants what is offered. Throws where it does not fit on the disk.
   * @param {string} id
   */
  async accept(id) {
    const message = await this.#lackOfSpace(this.#transfers.find(id).bytesTotal);
    if (message) throw new Error(message);
    this.#questions.answer(id, true);
  }

  /**
   * The person's answer to what the transfer asks.
   * @param {string} id
   * @param {boolean} answer
   */
  answer(id, answer) {
    const isWaiting = this.#questions.answer(id, answer);
    const { state } = this.#transfers.find(id);
    if (isWaiting && answer && state === 'confirming') {
      this.#transfers.change(id, { isConfirmed: true });
    }
  }

  /** @param {string} id */
  cancel(id) {
    return this.#stop(id, 'cancelled');
  }

  /**
   * Pauses it: sent again, it goes on where it was.
   * @param {string} id
   */
  pause(id) {
    return this.#stop(id, 'paused');
  }

  /**
   * @param {string} id
   * @param {import('./running.js').Stop} code
   */
  async #stop(id, code) {
    await this.#running.stop(id, code);
    this.#questions.answer(id, false);
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

/**
 * Connects while the items are looked at, which takes about as long. Rejects where nothing can be sent.
 * @param {Outgoings} offer
 * @param {() => Promise<Contact>} connect
 */
async function connectedFor(offer, connect) {
  const connecting = connect();
  try {
    await Promise.all([connecting, offer.anything()]);
  } catch (error) {
    connecting.then(({ conversation }) => conversation.close('cancelled')).catch(() => {});
    throw error;
  }
  return connecting;
}
