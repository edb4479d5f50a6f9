// The transfers: those under way, and the most recent of those that ended.

import { hex, randomBytes } from '../protocol/bytes.js';
import { words } from '../text/words.js';
import { isContents, nameOfContents, topOf } from './contents.js';
import { Progress } from './progress.js';
import {
  fittingEntries,
  isCount,
  isListOf,
  isMissingOr,
  isNullOr,
  isOneOf,
  isRecord,
  isSentence,
  isText,
} from './schema.js';
import { SentItems } from './sent_items.js';
import { canRetry, hasEnded, TRANSFER_STATES } from './transfer_states.js';

/** @typedef {import('./types.js').Transfer} Transfer */

const DOCUMENT = 'transfers';
const MOST = 50;
const INTERVAL = 100;
/** How often transfers are looked at that may have stalled. */
const WATCH = 500;

/** What is kept of a transfer, beside what it sends. Rates are not: an earlier run's transfers have
 *  ended. */
const FIELDS = {
  id: isText,
  direction: isOneOf(['send', 'receive']),
  deviceId: isText,
  deviceName: isText,
  name: isText,
  state: isOneOf(TRANSFER_STATES),
  message: isNullOr(isSentence),
  fileCount: isCount,
  bytesTotal: isCount,
  bytesDone: isCount,
  locations: isListOf(isText),
  text: isNullOr(isText),
  textLocation: isMissingOr(isText),
  number: isText,
  scratch: isMissingOr(isText),
  failures: isListOf(isRecord({ name: isText, reason: isSentence })),
  failureCount: isCount,
  note: isNullOr(isSentence),
  contents: isMissingOr(isContents),
  itemCount: isMissingOr(isCount),
  when: isCount,
};

/** @type {Partial<Transfer>} */
const OVER = {
  code: null,
  rate: 0,
  secondsLeft: null,
  isConfirmed: false,
  isStranger: false,
  isStalled: false,
};

/** Dispatches “change”, ten times a second at most. */
export class Transfers extends EventTarget {
  #documents;
  #sentItems;
  /** @type {Transfer[]} newest first */
  #list;
  /** @type {Map<string, Progress>} */
  #progress = new Map();
  /** @type {ReturnType<typeof setTimeout> | undefined} */
  #timer;
  /** @type {ReturnType<typeof setInterval> | undefined} */
  #watch;
  #told = 0;

  /**
   * @param {import('./documents.js').Documents} documents
   * @param {Transfer[]} list
   * @param {SentItems} [sentItems]
   */
  constructor(documents, list, sentItems = new SentItems(documents)) {
    super();
    this.#documents = documents;
    this.#sentItems = sentItems;
    this.#list = list;
  }

  /** @param {import('./documents.js').Documents} documents */
  static async load(documents) {
    const stored = await documents.load(DOCUMENT, (content) =>
      fittingEntries(DOCUMENT, content, FIELDS),
    );
    const sentItems = new SentItems(documents);
    /** @type {Transfer[]} */
    const list = [];
    for (const transfer of (stored ?? []).slice(0, MOST)) {
      const items =
        canRetry(transfer) || !hasEnded(transfer) ? await sentItems.load(transfer.id) : [];
      const one = inThisLanguage({ contents: [], itemCount: 0, ...transfer, ...OVER, items });
      list.push(
        hasEnded(one) ? one : { ...one, state: 'failed', message: { key: 'end.interrupted' } },
      );
    }
    // If the transfers could not be read, their lists stay: the user may repair the document.
    const isRead = !documents.damaged.has(DOCUMENT);
    await documents.sweep((name) => isRead && sentItems.isUnneeded(name));
    return new Transfers(documents, list, sentItems);
  }

  /** Unfinished first, then the recent ones, newest first each. */
  get list() {
    return [...this.#list.filter((one) => !hasEnded(one)), ...this.#list.filter(hasEnded)];
  }

  /** @param {string} id */
  find(id) {
    const transfer = this.#list.find((one) => one.id === id);
    if (!transfer) throw new Error(words('transfers.gone'));
    return transfer;
  }

  /**
   * @param {Pick<Transfer, 'direction' | 'deviceId' | 'deviceName' | 'name' | 'state'> &
   *         Partial<Transfer>} given
   * @returns {Transfer}
   */
  add(given) {
    /** @type {Transfer} */
    const transfer = {
      id: crypto.randomUUID(),
      code: null,
      message: null,
      fileCount: 0,
      bytesTotal: 0,
      bytesDone: 0,
      rate: 0,
      secondsLeft: null,
      items: [],
      contents: [],
      itemCount: 0,
      isConfirmed: false,
      locations: [],
      text: null,
      number: hex(randomBytes(16)),
      isStranger: false,
      isStalled: false,
      failures: [],
      failureCount: 0,
      note: null,
      when: Date.now(),
      ...given,
    };
    this.#replace([transfer, ...this.#list]);
    return transfer;
  }

  /**
   * @param {string} id
   * @param {Partial<Transfer>} change
   */
  change(id, change) {
    const isLasting = change.state !== undefined || change.items !== undefined;
    this.#replace(
      this.#list.map((one) => (one.id === id ? changed(one, change) : one)),
      isLasting,
    );
    if (change.state && hasEnded({ state: change.state })) this.#progress.delete(id);
  }

  /**
   * @param {string} id
   * @param {number} bytesDone of all
   */
  advance(id, bytesDone) {
    const now = performance.now();
    const transfer = this.#list.find((one) => one.id === id);
    if (!transfer) return;
    const progress = this.#progress.get(id) ?? new Progress(transfer.bytesTotal, bytesDone, now);
    this.#progress.set(id, progress);
    progress.add(bytesDone, now);
    this.#show(transfer, progress.at(now));
    this.#watch ??= setInterval(() => this.#lookForStalls(), WATCH);
  }

  #lookForStalls() {
    const now = performance.now();
    for (const [id, progress] of this.#progress) {
      const transfer = this.#list.find((one) => one.id === id);
      if (transfer) this.#show(transfer, progress.at(now));
    }
    if (this.#progress.size > 0) return;
    clearInterval(this.#watch);
    this.#watch = undefined;
  }

  /**
   * @param {Transfer} transfer
   * @param {Partial<Transfer>} progress
   */
  #show(transfer, progress) {
    Object.assign(transfer, progress);
    this.#tell();
  }

  /** @param {(transfer: Transfer) => boolean} isUnwanted only ended ones go */
  remove(isUnwanted) {
    this.#replace(this.#list.filter((one) => !hasEnded(one) || !isUnwanted(one)));
  }

  /**
   * Puts transfers back that were removed.
   * @param {Transfer[]} transfers
   */
  restore(transfers) {
    this.#replace([...this.#list, ...transfers].sort((left, right) => right.when - left.when));
  }

  /**
   * @param {Transfer[]} list
   * @param {boolean} [isLasting]
   */
  #replace(list, isLasting = true) {
    const surplus = new Set(list.filter(hasEnded).slice(MOST));
    this.#list = list.filter((one) => !surplus.has(one));
    this.#tell();
    if (!isLasting) return;
    const kept = this.#list.map((one) => ({
      ...one,
      contents: topOf(one.contents),
      items: undefined,
    }));
    this.#documents.save(DOCUMENT, kept).catch(() => {});
    // Later: a list without its transfer is removed at the next start.
    this.#sentItems.save(this.#list);
  }

  #tell() {
    if (this.#timer !== undefined) return;
    const wait = Math.max(0, this.#told + INTERVAL - performance.now());
    this.#timer = setTimeout(() => {
      this.#timer = undefined;
      this.#told = performance.now();
      // Views get copies: they compare what they have with what comes next.
      this.#list = this.#list.map((one) => (hasEnded(one) ? one : { ...one }));
      this.dispatchEvent(new Event('change'));
    }, wait);
  }
}

/**
 * Renames texts, and what is called “… and 2 more”, in the language of the window.
 * @param {Transfer} transfer
 * @returns {Transfer}
 */
function inThisLanguage(transfer) {
  if (transfer.contents.length === 0) return transfer;
  const contents = transfer.contents.map((node) =>
    node.kind === 'text' ? { ...node, name: words('item.text') } : node,
  );
  return { ...transfer, contents, name: nameOfContents(contents, transfer.itemCount) };
}

/**
 * @param {Transfer} transfer
 * @param {Partial<Transfer>} change
 * @returns {Transfer}
 */
function changed(transfer, change) {
  const after = { ...transfer, ...change };
  if (change.state === undefined) return after;
  after.when = Date.now();
  if (change.state !== 'confirming') after.isConfirmed = false;
  // The tree is only shown while the question is open.
  if (change.state !== 'asking') after.contents = topOf(after.contents);
  return after;
}
