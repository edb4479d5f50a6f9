// Verifies the other device: one whose key is known goes on at once; at the first contact both persons
// compare a code.

import { jsonBytes } from './bytes.js';
import { Type } from './conversation.js';
import { TransferError } from './errors.js';
import { Time } from './limits.js';

/** @typedef {import('./handshake.js').Session} Session */
/**
 * @typedef {object} Trust
 * @property {(id: string, key: Uint8Array) => 'new' | 'trusted' | 'changed'} of
 * @property {(id: string, key: Uint8Array, name: string) => Promise<void>} pin
 */

/**
 * @template T
 * @param {Promise<T>} answer
 * @param {number} limit in milliseconds
 * @returns {Promise<T>}
 */
function withLimit(answer, limit) {
  return new Promise((resolve, reject) => {
    const timer = setTimeout(() => reject(new TransferError('no-answer')), limit);
    answer.then(resolve, reject).finally(() => clearTimeout(timer));
  });
}

/**
 * As long as a person may take to answer.
 * @template T
 * @param {Promise<T>} answer
 */
export const beforeLong = (answer) => withLimit(answer, Time.question);

/**
 * Tells whether the other side's key is known here, and hears whether this one's is there. From then
 * on the conversation of two that know each other is no longer held to a stranger's bounds.
 * @param {import('./conversation.js').Conversation} conversation
 * @param {Session} session
 * @param {Trust} trust
 * @returns {Promise<boolean>} whether both know each other
 */
export async function greet(conversation, { peer }, trust) {
  const standing = trust.of(peer.id, peer.key);
  if (standing === 'changed') throw new TransferError('new-key');
  const knows = standing === 'trusted';
  const theirs = withLimit(conversation.expect(Type.greeting), Time.greeting);
  await Promise.all([conversation.send(Type.greeting, jsonBytes({ knows })), theirs]);
  const isKnown = knows && (await theirs).knows === true;
  if (!isKnown) return false;
  conversation.trust();
  // The device may have been renamed.
  await trust.pin(peer.id, peer.key, peer.name);
  return true;
}

/**
 * Keeps the other device's key once both persons say that the codes match.
 * @param {import('./conversation.js').Conversation} conversation
 * @param {Session} session
 * @param {Trust} trust
 * @param {(code: string) => Promise<boolean>} compare what the person says
 */
export async function introduce(conversation, { peer, code }, trust, compare) {
  const theirs = conversation.expect(Type.confirmed);
  const ours = beforeLong(compare(code)).then((matches) => {
    if (!matches) throw new TransferError('code-differs');
    return conversation.send(Type.confirmed);
  });
  await Promise.all([ours, beforeLong(theirs)]);
  conversation.trust();
  await trust.pin(peer.id, peer.key, peer.name);
}
