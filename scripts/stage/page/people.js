// Two persons' devices whose lasting keys are in the page, and what they do with each other.

import { pipe } from './pipe.js';
import { randomBytes } from './protocol/bytes.js';
import { Conversation } from './protocol/conversation.js';
import { answer, call } from './protocol/handshake.js';
import { agreedWithLasting, connectionKey } from './protocol/key_schedule.js';

const { subtle } = crypto;
const importKey = (key, usage) => subtle.importKey('raw', key, 'AES-GCM', false, [usage]);

/** A lasting key with the operations that the host has for its own. */
function lastingKeyOf(own) {
  return {
    agree: (publicKey) => agreedWithLasting(own, publicKey),
    async seal(key, data) {
      const iv = randomBytes(12);
      const sealed = await subtle.encrypt(
        { name: 'AES-GCM', iv },
        await importKey(key, 'encrypt'),
        data,
      );
      return new Uint8Array([...iv, ...new Uint8Array(sealed)]);
    },
    async open(key, data) {
      const parameters = { name: 'AES-GCM', iv: data.slice(0, 12) };
      return new Uint8Array(
        await subtle.decrypt(parameters, await importKey(key, 'decrypt'), data.slice(12)),
      );
    },
  };
}

async function person(name, first) {
  const own = await connectionKey();
  const id = `${first.repeat(8)}-0000-4000-8000-000000000000`;
  return { party: { id, name, key: own.publicKey }, lasting: lastingKeyOf(own) };
}

export const anna = await person('Anna', 'a');
export const bob = await person('Bob', 'b');
export const eve = await person('Eve', 'e');

export const calls = (stream, who = anna, accepts = () => true) =>
  call(stream, who.party, who.lasting, accepts);
export const answers = (stream, who = bob) => answer(stream, who.party, who.lasting);

/** The sessions of both ends. */
export const shaken = ([caller, callee]) => Promise.all([calls(caller), answers(callee)]);

/** Both ends' conversations. */
export async function conversations() {
  const streams = pipe();
  const sessions = await shaken(streams);
  return Promise.all(
    sessions.map(async (session, at) => ({
      session,
      talk: new Conversation(await streams[at].protect(session.keys)),
    })),
  );
}

/** The code of the error that it ends with. */
export const failure = (promise) =>
  promise.then(
    () => 'none',
    (error) => error.code ?? error.name,
  );
export const refusal = (action) => failure((async () => action())());
