// How two devices begin: three frames in the clear, whose digest names the session. See
// docs/protocol.md for why the caller commits to its nonce first.

import { digest, equalBytes, hex, jsonBytes, objectOf, randomBytes, unhex } from './bytes.js';
import { cleanName, isDeviceId } from './announcement.js';
import { TransferError } from './errors.js';
import { within } from './frames.js';
import { Limit, Time, VERSION } from './limits.js';

/** @typedef {import('./frames.js').FrameStream} FrameStream */
/** @typedef {{ id: string, name: string, key: Uint8Array }} Party */
/** @typedef {{ peer: Party, session: Uint8Array, code: string, isCaller: boolean }} Session */

const NONCE = 32;
const KEY = 65;

/**
 * @param {FrameStream} stream
 * @returns {Promise<Uint8Array>}
 */
async function readHello(stream) {
  const frame = await within(stream.read(Limit.helloBytes), Time.handshake, stream, 'no-answer');
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
 * @param {Record<string, any>} hello
 * @returns {Party}
 */
function partyOf(hello) {
  if (!isDeviceId(hello.id)) throw new TransferError('not-understood');
  return { id: hello.id, name: cleanName(hello.name), key: field(hello.key, KEY) };
}

/** @param {Party} party */
const introduced = (party) => ({ id: party.id, name: party.name, key: hex(party.key) });

/**
 * @param {Uint8Array[]} hellos
 * @param {Party} peer
 * @param {boolean} isCaller
 * @returns {Promise<Session>}
 */
async function sessionOf(hellos, peer, isCaller) {
  const session = await digest('Brevanholt session 1', ...hellos);
  const code = await digest('Brevanholt code 1', session);
  const number = new DataView(code.buffer).getUint32(0) % 1_000_000;
  return { peer, session, code: String(number).padStart(6, '0'), isCaller };
}

/** @param {Uint8Array} nonce */
const commitmentTo = (nonce) => digest('Brevanholt commitment 1', nonce);

/**
 * The side that connected.
 * @param {FrameStream} stream
 * @param {Party} self
 * @returns {Promise<Session>}
 */
export async function call(stream, self) {
  const nonce = randomBytes(NONCE);
  const commitment = hex(await commitmentTo(nonce));
  const first = jsonBytes({ brevanholt: [VERSION], ...introduced(self), commitment });
  await stream.write(first);
  const second = await readHello(stream);
  const hello = parsed(second);
  if (hello.refused !== undefined) throw TransferError.told(hello.refused);
  if (hello.brevanholt !== VERSION) throw new TransferError('version');
  field(hello.nonce, NONCE);
  const third = jsonBytes({ nonce: hex(nonce) });
  await stream.write(third);
  return sessionOf([first, second, third], partyOf(hello), true);
}

/**
 * The side that was connected to.
 * @param {FrameStream} stream
 * @param {Party} self
 * @returns {Promise<Session>}
 */
export async function answer(stream, self) {
  const first = await readHello(stream);
  const hello = parsed(first);
  const versions = Array.isArray(hello.brevanholt) ? hello.brevanholt : [];
  if (!versions.includes(VERSION)) {
    await refuse(stream, 'version');
    throw new TransferError('version');
  }
  const peer = partyOf(hello);
  const commitment = field(hello.commitment, NONCE);
  const second = jsonBytes({ brevanholt: VERSION, ...introduced(self), nonce: hex(randomBytes(NONCE)) });
  await stream.write(second);
  const third = await readHello(stream);
  const nonce = field(parsed(third).nonce, NONCE);
  if (!equalBytes(await commitmentTo(nonce), commitment)) throw new TransferError('not-understood');
  return sessionOf([first, second, third], peer, false);
}

/**
 * Tells a caller in the clear why it is not answered.
 * @param {FrameStream} stream
 * @param {string} code
 */
export async function refuse(stream, code) {
  await stream.write(jsonBytes({ refused: code, brevanholt: [VERSION] })).catch(() => {});
  await stream.finish();
}
