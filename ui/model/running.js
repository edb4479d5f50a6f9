// The transfers that run: how each is stopped from here, and how each ends.

import { TransferError } from '../protocol/errors.js';
import { discardScratch, pauseScratch } from '../protocol/scratch_area.js';
import { endedBy } from './outcomes.js';

/** Errors after which what has arrived is not kept for a resumption. */
const DISCARDS = new Set([
  'cancelled',
  'cancelled-there',
  'disk-full',
  'declined',
  'not-understood',
]);

/** @typedef {import('./types.js').Transfer} Transfer */
/** @typedef {import('../protocol/conversation.js').Conversation} Conversation */
/** @typedef {'cancelled' | 'paused'} Stop */

/** A transfer on its way to its end. */
export class Run {
  /** Null while it is not connected. @type {Conversation | null} */
  conversation = null;
  /** How it was stopped here. @type {Stop | null} */
  stopped = null;
  /** Resolves when the transfer says how it ended. */
  ended = Promise.resolve();

  /**
   * Takes the conversation, to close it at the end. Throws where the transfer was stopped before.
   * @param {Conversation} conversation
   */
  hold(conversation) {
    this.conversation = conversation;
    if (this.stopped) throw new TransferError(this.stopped);
  }
}

export class Running {
  #transfers;
  /** By transfer. @type {Map<string, Run>} */
  #runs = new Map();

  /** @param {import('./transfers.js').Transfers} transfers */
  constructor(transfers) {
    this.#transfers = transfers;
  }

  /**
   * Runs a transfer, and changes it to what the work returns, or to how it failed. Never throws.
   * @param {string} id
   * @param {(run: Run) => Promise<Partial<Transfer>>} work
   */
  async run(id, work) {
    const run = new Run();
    this.#runs.set(id, run);
    run.ended = this.#runToEnd(id, run, work);
    await run.ended;
    this.#runs.delete(id);
  }

  /**
   * Stops a transfer that runs.
   * @param {string} id
   * @param {Stop} code
   */
  async stop(id, code) {
    const run = this.#runs.get(id);
    if (!run) return;
    run.stopped = code;
    await run.conversation?.close(code);
  }

  /**
   * Ends a transfer as if its connection was lost, where it runs.
   * @param {string} id
   */
  async lose(id) {
    const run = this.#runs.get(id);
    await run?.conversation?.close('lost');
    await run?.ended;
  }

  /**
   * @param {string} id
   * @param {Run} run
   * @param {(run: Run) => Promise<Partial<Transfer>>} work
   */
  async #runToEnd(id, run, work) {
    let code;
    /** @type {Partial<Transfer>} */
    let outcome;
    try {
      outcome = await work(run);
    } catch (error) {
      const reason = run.stopped
        ? new TransferError(run.stopped)
        : TransferError.of(error, 'not-saved');
      code = reason.code;
      outcome = endedBy(reason, this.#transfers.find(id));
    }
    const { conversation } = run;
    run.conversation = null; // the end was decided, so stop() must not close it with another code
    await this.#tidy(id, code);
    this.#transfers.change(id, { isStalled: false, ...outcome });
    await conversation?.close(code);
  }

  /**
   * Keeps what has arrived for a resumption, unless the transfer was cancelled or the disk is full.
   * @param {string} id
   * @param {string | undefined} code
   */
  async #tidy(id, code) {
    const { scratch } = this.#transfers.find(id);
    if (!scratch || !code) return;
    if (DISCARDS.has(code)) await discardScratch(scratch).catch(() => {});
    else if (code === 'paused') await pauseScratch(scratch).catch(() => {});
  }
}
