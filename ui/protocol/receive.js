// The receiving side of a transfer, from the offer to the word that all was saved.

import { jsonBytes } from './bytes.js';
import { contentOf, Type } from './conversation.js';
import { TransferError } from './errors.js';
import { Inbox } from './inbox.js';
import { Time } from './limits.js';
import { ManifestReader } from './manifest.js';

/** Failures, or entries that had arrived, in one record. */
const LISTED = 400;
const TRANSFER = /^[0-9a-f]{32}$/;

/** @typedef {import('./manifest.js').Entry} Entry */
/** @typedef {import('./conversation.js').Conversation} Conversation */
/** @typedef {import('./scratch_area.js').TransferScratch} TransferScratch */
/** `transfer`: the sender's number of it. `manifest`: by which the same entries are recognised.
 *  @typedef {{ transfer: string, manifest: string, entries: Entry[] }} Offer */

/**
 * @param {Conversation} conversation
 * @param {(entry: Entry) => Entry} convert what is offered to what is received
 * @returns {Promise<Offer>}
 */
export async function receiveOffer(conversation, convert) {
  const manifest = new ManifestReader(convert);
  for (;;) {
    const { type, body } = await conversation.next();
    if (type === Type.offer) {
      manifest.add(body);
    } else if (type === Type.offered) {
      const { transfer } = contentOf(body);
      if (!TRANSFER.test(transfer)) throw new TransferError('not-understood');
      return { transfer, manifest: await manifest.digest(), entries: manifest.finish() };
    } else {
      throw new TransferError('not-understood');
    }
  }
}

/**
 * Accepts the offer and receives it.
 * @param {Conversation} conversation
 * @param {Entry[]} entries
 * @param {TransferScratch} scratch
 * @param {Promise<import('./conversation.js').Arrival>} first what comes after the offer
 * @param {(bytes: number) => void} onProgress all that has arrived, with what had before
 * @returns {ReturnType<Inbox['finish']>}
 */
export async function receiveAll(conversation, entries, scratch, first, onProgress) {
  const had = await scratch.had(entries);
  const inbox = new Inbox(entries, scratch, had, (parts) => conversation.expectContent(parts));
  let arrived = had.reduce((sum, { bytes, digest }) => sum + (digest === null ? bytes : 0), 0);
  /** @type {ReturnType<typeof setInterval> | undefined} */
  let telling;
  try {
    const list = had.map(({ index, bytes, digest }) => [index, bytes, ...(digest ? [digest] : [])]);
    await sendListed(conversation, Type.have, list);
    await inbox.expectMore();
    await conversation.send(Type.accepted);
    telling = setInterval(() => {
      conversation.send(Type.taken, jsonBytes({ bytes: arrived })).catch(() => {});
    }, Time.taken);
    for (let next = first; ; next = conversation.arrival()) {
      const arrival = await next;
      arrived += arrival.taken;
      onProgress(arrived);
      await inbox.take(arrival);
      const { record } = arrival;
      if (record?.type === Type.sent) break;
      if (record?.type === Type.checked) await inbox.check(contentOf(record.body));
      else if (record) throw new TransferError('not-understood');
    }
    const result = await inbox.finish();
    const failed = result.failures.filter(({ isTold }) => !isTold);
    await sendListed(
      conversation,
      Type.checked,
      failed.map(({ index, code }) => [index, code]),
    );
    await conversation.send(Type.received);
    await scratch.discard();
    return result;
  } catch (error) {
    throw TransferError.of(error, 'not-saved');
  } finally {
    clearInterval(telling);
    await inbox.close();
    await scratch.close();
  }
}

/**
 * @param {Conversation} conversation
 * @param {number} type
 * @param {unknown[]} all
 */
async function sendListed(conversation, type, all) {
  for (let at = 0; at < all.length; at += LISTED) {
    const some = all.slice(at, at + LISTED);
    await conversation.send(
      type,
      jsonBytes(type === Type.have ? { have: some } : { failed: some }),
    );
  }
}
