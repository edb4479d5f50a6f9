// Makes sure of who is at the other end: a device whose key is known goes on at once; at the first
// contact both persons compare a code.

import { TransferError } from './errors.js';
import { Type } from './conversation.js';
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
 * @returns {Promise<T>}
 */
export function beforeLong(answer) {
  return new Promise((resolve, reject) => {
    const timer = setTimeout(() => reject(new TransferError('no-answer')), Time.question);
    answer.then(resolve, reject).finally(() => clearTimeout(timer));
  });
}

/**
 * Hears from the other side in a sealed record for the first time, which proves that it has the key
 * it showed.
 * @param {import('./conversation.js').Conversation} conversation
 * @param {Session} session
 * @param {Trust} trust
 * @returns {Promise<boolean>} whether both know each other
 */
export async function greet(conversation, { peer }, trust) {
  const standing = trust.of(peer.id, peer.key);
  if (standing === 'changed') throw new TransferError('new-key');
  const isKnown = standing === 'trusted';
  await conversation.send(Type.greeting, new Uint8Array([Number(isKnown)]));
  const greeting = await conversation.expect(Type.greeting);
  return isKnown && greeting[0] === 1;
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
  await trust.pin(peer.id, peer.key, peer.name);
}
