// The handshake of two devices: seven frames that agree on new keys and prove the lasting keys, without
// revealing either to a listener. docs/protocol.md has the frames, the derivation, and why the caller
// commits to its share first.

import { isDeviceId, cleanName } from './announcement.js';
import { digest, equalBytes, hex, jsonBytes, joined, objectOf, unhex } from './bytes.js';
import { TransferError } from './errors.js';
import { agreed, agreedWithLasting, connectionKey, KeySchedule } from './key_schedule.js';
import { VERSION } from './limits.js';

/** @typedef {import('./frames.js').FrameStream} FrameStream */
/** @typedef {{ id: string, name: string, key: Uint8Array }} Party */
/** The lasting key's operations, which are the host's: `agree` is cryptoDeriveSharedKey.
 *  @typedef {object} LastingKey
 *  @property {(publicKey: Uint8Array) => Promise<Uint8Array>} agree
 *  @property {(key: Uint8Array, data: Uint8Array) => Promise<Uint8Array>} seal
 *  @property {(key: Uint8Array, data: Uint8Array) => Promise<Uint8Array>} open */
/** @typedef {import('./frames.js').RecordKeys} RecordKeys */
/** @typedef {{ peer: Party, code: string, keys: RecordKeys }} Session */

const KEY = 65;
const DIGEST = 32;
const TAG = 16;
/** The size to which a sealed identity is padded, so that it does not show the length of the name. */
const PARTY = 512;

/**
 * The side that connected. Goes on after the callee's frames only where `accepts` does.
 * @param {FrameStream} stream
 * @param {Party} self
 * @param {LastingKey} lasting
 * @param {(peer: Party) => boolean} accepts
 * @returns {Promise<Session>}
 */
export async function call(stream, self, lasting, accepts) {
  const { schedule, peer, agreement, code } = await meet(stream, lasting);
  if (!accepts(peer)) throw new TransferError('other-key');
  const sealedKey = await schedule.seal(self.key);
  await schedule.mixKey(agreement);
  await schedule.mixKey(await understood(lasting.agree(peer.key)));
  await stream.write(joined(sealedKey, await schedule.seal(partyBytes(self))));
  const keys = await schedule.split();
  await stream.write(await lasting.seal(keys.callerConfirms, schedule.hash));
  await expectConfirmation(stream, lasting, keys.calleeConfirms, schedule.hash);
  return { peer, code, keys: { send: keys.caller, receive: keys.callee } };
}

/**
 * The party that answers, proven by its key. The caller does not identify itself, and closes the
 * connection.
 * @param {FrameStream} stream
 * @param {LastingKey} lasting
 * @returns {Promise<Party>}
 */
export async function probe(stream, lasting) {
  return (await meet(stream, lasting)).peer;
}

/**
 * The side that was connected to.
 * @param {FrameStream} stream
 * @param {Party} self
 * @param {LastingKey} lasting
 * @returns {Promise<Session>}
 */
export async function answer(stream, self, lasting) {
  const schedule = await KeySchedule.begin();
  const first = await readFrame(stream);
  const hello = parsed(first);
  const versions = Array.isArray(hello.brevanholt) ? hello.brevanholt : [];
  if (!versions.includes(VERSION)) {
    await refuse(stream, 'version');
    throw new TransferError('version');
  }
  const commitment = field(hello.commitment, DIGEST);
  await schedule.mixHash(first);

  const own = await connectionKey();
  const second = jsonBytes({ brevanholt: VERSION, share: hex(own.publicKey) });
  await schedule.mixHash(second);
  await stream.write(second);

  const share = await readFrame(stream);
  if (!equalBytes(await commitmentTo(share), commitment)) throw new TransferError('not-understood');
  // Web Crypto may take any bytes for a point of the curve; the host does not.
  const agreement = await understood(lasting.agree(share));
  await schedule.mixHash(share);
  const code = await schedule.code();
  await schedule.mixKey(await understood(agreed(own, share)));

  const sealedKey = await schedule.seal(self.key);
  await schedule.mixKey(agreement);
  await stream.write(joined(sealedKey, await schedule.seal(partyBytes(self))));

  const fifth = await readFrame(stream);
  const key = await openKey(schedule, fifth);
  await schedule.mixKey(await understood(agreedWithLasting(own, key)));
  await schedule.mixKey(await understood(lasting.agree(key)));
  const peer = await openParty(schedule, fifth, key);
  const keys = await schedule.split();
  await expectConfirmation(stream, lasting, keys.callerConfirms, schedule.hash);
  await stream.write(await lasting.seal(keys.calleeConfirms, schedule.hash));
  return { peer, code, keys: { send: keys.callee, receive: keys.caller } };
}

/**
 * Tells a caller, unencrypted, why the connection is refused.
 * @param {FrameStream} stream
 * @param {string} code
 */
export async function refuse(stream, code) {
  await stream.write(jsonBytes({ refused: code, brevanholt: [VERSION] })).catch(() => {});
  await stream.finish();
}

/**
 * The caller's side as far as the callee's proof, with what its lasting key agrees on.
 * @param {FrameStream} stream
 * @param {LastingKey} lasting
 */
async function meet(stream, lasting) {
  const schedule = await KeySchedule.begin();
  const own = await connectionKey();
  const commitment = hex(await commitmentTo(own.publicKey));
  const first = jsonBytes({ brevanholt: [VERSION], commitment });
  await schedule.mixHash(first);
  await stream.write(first);

  const second = await readFrame(stream);
  const hello = parsed(second);
  if (hello.refused !== undefined) throw TransferError.told(hello.refused);
  if (hello.brevanholt !== VERSION) throw new TransferError('version');
  const share = field(hello.share, KEY);
  // Web Crypto may take any bytes for a point of the curve; the host does not.
  const agreement = await understood(lasting.agree(share));
  await schedule.mixHash(second);

  await schedule.mixHash(own.publicKey);
  await stream.write(own.publicKey);
  const code = await schedule.code();
  await schedule.mixKey(await understood(agreed(own, share)));

  const fourth = await readFrame(stream);
  const key = await openKey(schedule, fourth);
  await schedule.mixKey(await understood(agreedWithLasting(own, key)));
  const peer = await openParty(schedule, fourth, key);
  return { schedule, peer, agreement, code };
}

/** @param {Uint8Array} share */
const commitmentTo = (share) => digest('Brevanholt 2 commitment', share);

/**
 * @param {KeySchedule} schedule
 * @param {Uint8Array} frame
 */
async function openKey(schedule, frame) {
  const key = await understood(schedule.open(frame.slice(0, KEY + TAG)));
  if (key.length !== KEY) throw new TransferError('not-understood');
  return key;
}

/**
 * @param {KeySchedule} schedule
 * @param {Uint8Array} frame
 * @param {Uint8Array} key
 * @returns {Promise<Party>}
 */
async function openParty(schedule, frame, key) {
  const { id, name } = parsed(await understood(schedule.open(frame.slice(KEY + TAG))));
  if (!isDeviceId(id)) throw new TransferError('not-understood');
  return { id, name: cleanName(name), key };
}

/** @param {Party} party */
function partyBytes({ id, name }) {
  const letters = [...name];
  for (;;) {
    const bytes = jsonBytes({ id, name: letters.join('') });
    if (bytes.length <= PARTY) {
      const padded = new Uint8Array(PARTY).fill(0x20);
      padded.set(bytes);
      return padded;
    }
    letters.pop();
  }
}

/**
 * @param {FrameStream} stream
 * @param {LastingKey} lasting
 * @param {Uint8Array} key
 * @param {Uint8Array} expected
 */
async function expectConfirmation(stream, lasting, key, expected) {
  const confirmed = await understood(lasting.open(key, await readFrame(stream)));
  if (!equalBytes(confirmed, expected)) throw new TransferError('not-understood');
}

/**
 * @param {FrameStream} stream
 * @returns {Promise<Uint8Array>}
 */
async function readFrame(stream) {
  const frame = await stream.read();
  if (!frame) throw new TransferError('lost');
  return frame;
}

/** @param {Uint8Array} frame */
function parsed(frame) {
  try {
    return objectOf(frame);
  } catch {
    throw new TransferError('not-understood');
  }
}

/**
 * @param {unknown} text
 * @param {number} size
 */
function field(text, size) {
  const bytes = unhex(text, size);
  if (!bytes) throw new TransferError('not-understood');
  return bytes;
}

/**
 * The result of a computation on the other side's bytes; a failure counts as the other side's error.
 * @template T
 * @param {Promise<T>} promise
 * @returns {Promise<T>}
 */
function understood(promise) {
  return promise.catch(() => {
    throw new TransferError('not-understood');
  });
}
