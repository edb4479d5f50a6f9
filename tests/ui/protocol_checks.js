// What the protocol promises, checked in the engine that runs it, with the host's own cryptography.

import { equal } from './expect.js';
import { pipe, tappedPipe } from './pipe.js';
import { platform } from './platform.js';
import { decodeAnnouncement, encodeAnnouncement } from './protocol/announcement.js';
import { hex, jsonBytes, randomBytes, utf8 } from './protocol/bytes.js';
import { Conversation, Type } from './protocol/conversation.js';
import { answer, call } from './protocol/handshake.js';
import { greet, introduce } from './protocol/introduction.js';
import { Limit } from './protocol/limits.js';
import { decodeManifest, encodeManifest } from './protocol/manifest.js';
import { SealedStream } from './protocol/sealed_stream.js';
import { filledRecord, segmentsIn, segmentsOf } from './protocol/segments.js';
import { Trust } from './model/trust.js';
import { TcpListener } from './engine/sockets.js';
import { Endpoint } from './protocol/endpoint.js';
import { releasablePaths } from './model/items.js';
import { Budget } from './protocol/budget.js';

const party = (name, first) =>
  ({ id: `${first.repeat(8)}-0000-4000-8000-000000000000`, name, key: new Uint8Array(65).fill(4) });
const ANNA = party('Anna', 'a');
const BOB = party('Bob', 'b');
const KEY = new Uint8Array(32).fill(9);
const cipher = { seal: (data) => platform.cryptoEncrypt(KEY, data), open: (data) => platform.cryptoDecrypt(KEY, data) };

/** The code of the error that it ends with. */
const failure = (promise) => promise.then(() => 'none', (error) => error.code ?? error.name);
const refusal = (action) => failure((async () => action())());
const shaken = ([caller, callee]) => Promise.all([call(caller, ANNA), answer(callee, BOB)]);

/** Both ends' conversations over streams. */
async function conversations(streams) {
  const sessions = await shaken(streams);
  return sessions.map((session, at) =>
    ({ session, talk: new Conversation(new SealedStream(streams[at], cipher, session), streams[at]) }));
}

/** What becomes of three records when somebody changes what the caller sends after the handshake. */
async function outcomeOf(meddle) {
  const frames = [];
  const streams = tappedPipe((frame, number) => {
    if (number < 2) return [frame];
    frames.push(frame);
    return meddle(frame, number - 2, frames);
  });
  const [caller, callee] = await conversations(streams);
  for (const text of ['one', 'two', 'three']) caller.talk.send(Type.data, utf8(text)).catch(() => {});
  const heard = [];
  const end = await failure((async () => {
    for (;;) heard.push(new TextDecoder().decode((await callee.talk.next()).body));
  })());
  await Promise.all([caller.talk.close(), callee.talk.close()]);
  return [...heard, end];
}

const memory = () => ({ load: async () => null, save: async () => {} });

export const protocolChecks = {
  async thePagesOwnCryptographyAgreesWithTheHosts() {
    const curve = { name: 'ECDH', namedCurve: 'P-256' };
    const { subtle } = crypto;
    const peer = await subtle.generateKey(curve, false, ['deriveBits']);
    const theirs = new Uint8Array(await subtle.exportKey('raw', peer.publicKey));
    const key = await platform.cryptoDeriveSharedKey(theirs);
    const ours = await subtle.importKey('raw', await platform.cryptoCreateIdentity(), curve, true, []);
    const secret = await subtle.deriveBits({ ...curve, public: ours }, peer.privateKey, 256);
    const material = await subtle.importKey('raw', secret, 'HKDF', false, ['deriveKey']);
    const peerCipher = await subtle.deriveKey(
      { name: 'HKDF', hash: 'SHA-256', salt: utf8('Brevanholt-v1'), info: new Uint8Array() },
      material, { name: 'AES-GCM', length: 256 }, false, ['encrypt', 'decrypt']);

    const data = utf8('naïve 🎈');
    const sealed = await platform.cryptoEncrypt(key, data);
    const opened = await subtle.decrypt(
      { name: 'AES-GCM', iv: sealed.slice(0, 12) }, peerCipher, sealed.slice(12));
    equal(hex(new Uint8Array(opened)), hex(data));
    const iv = randomBytes(12);
    const answered = await subtle.encrypt({ name: 'AES-GCM', iv }, peerCipher, data);
    const whole = new Uint8Array([...iv, ...new Uint8Array(answered)]);
    equal(hex(await platform.cryptoDecrypt(key, whole)), hex(data));
    whole[20] ^= 1;
    for (const call of [platform.cryptoDecrypt(key, whole), platform.cryptoDecrypt(key, iv),
      platform.cryptoEncrypt(iv.slice(5), data), platform.cryptoDeriveSharedKey(randomBytes(65))]) {
      equal(await failure(call), 'platform_error');
    }
  },

  announcementsCarryADeviceAndNothingElse() {
    const here = { kind: 'here', ...BOB, port: 4711 };
    equal(hex(decodeAnnouncement(encodeAnnouncement(here)).key), hex(BOB.key));
    const long = encodeAnnouncement({ ...here, name: '日'.repeat(900) });
    equal(long.length <= Limit.datagram, true);
    equal(decodeAnnouncement(long).name, '日'.repeat(Limit.nameCharacters));
    const nameOf = (name) => decodeAnnouncement(encodeAnnouncement({ ...here, name })).name;
    equal(nameOf('  Bob\n\u202egpj.exe\u0000 '), 'Bob gpj.exe');
    equal(nameOf('\u200b'), 'Unnamed device');

    const good = { brevanholt: 1, kind: 'here', id: BOB.id, name: 'Bob', port: 1, key: hex(BOB.key) };
    const bad = [{ brevanholt: 2 }, { kind: 'there' }, { id: '../../x' }, { port: 0 }, { port: 65_536 },
      { port: '1' }, { key: 'zz' }, { key: hex(BOB.key).slice(2) }, { key: null }, { pad: 'x'.repeat(1200) }];
    equal(bad.map((change) => decodeAnnouncement(jsonBytes({ ...good, ...change }))), bad.map(() => null));
    equal([utf8(''), utf8('[]'), utf8('null'), randomBytes(300)].map(decodeAnnouncement), [null, null, null, null]);
  },

  async manifestsAreBounded() {
    const entries = [{ kind: 'directory', path: 'Photos', size: 0 },
      { kind: 'file', path: 'Photos/it\'s "100%".jpg', size: 2 ** 40 }, { kind: 'text', path: 'Text', size: 5 }];
    equal(decodeManifest(encodeManifest(entries)), entries);
    const bad = [
      {}, [], [[0, 'a']], [[3, 'a', 0]], [['0', 'a', 0]], [[0, 'a', -1]], [[0, 'a', 0.5]], [[1, 'a', 1]],
      [[2, 'a', Limit.textBytes + 1]], [[0, 'a', 2 ** 53]],
      [[0, 'a', 2 ** 53 - 1], [0, 'b', 1]],
      ...['', '/', '/etc/passwd', 'a/../../b', '..', './a', 'a//b', 'a/', 'a\0b', 'x'.repeat(256),
        'a/'.repeat(Limit.depth) + 'b'].map((path) => [[0, path, 1]]),
      Array.from({ length: Limit.entries + 1 }, () => [0, 'a', 1]),
    ];
    for (const list of bad) equal(await refusal(() => decodeManifest(jsonBytes(list))), 'not-understood');
  },

  async segmentsCoverEveryFileOnceInOrder() {
    const sizes = [0, 1, 3 * Limit.chunk + 7, 0, ...Array.from({ length: 40 }, (_, at) => at), Limit.chunk];
    const entries = sizes.map((size, at) => ({ kind: at === 3 ? 'directory' : 'file', path: `${at}`, size }));
    const taken = new Map();
    for (const record of segmentsOf(entries)) {
      const { body } = await filledRecord(record, async ({ index, length }) => new Uint8Array(length).fill(index));
      equal(body.length <= Limit.frame - 1024, true);
      for (const { index, offset, length, bytes } of segmentsIn(body)) {
        equal([offset, bytes.every((byte) => byte === index)], [taken.get(index) ?? 0, true]);
        taken.set(index, offset + length);
      }
    }
    equal([...taken], sizes.map((size, at) => [at, size]).filter(([at]) => at !== 3));
    const short = filledRecord([{ index: 0, offset: 0, length: 2 }], async () => new Uint8Array(1));
    equal(await failure(short), 'changed-file');
    const beyond = new Uint8Array(20);
    beyond[15] = 5;
    equal(await refusal(() => [...segmentsIn(beyond)]), 'not-understood');
    equal(await refusal(() => [...segmentsIn(new Uint8Array(15))]), 'not-understood');
  },

  async handshakesEndInOneSessionAndOneCode() {
    const [one, other] = await shaken(pipe());
    equal([hex(one.session), one.code, one.peer.name], [hex(other.session), other.code, 'Bob']);
    equal([other.peer.name, /^\d{6}$/.test(one.code), one.isCaller], ['Anna', true, true]);
    const [again] = await shaken(pipe());
    equal(hex(again.session) === hex(one.session), false);
  },

  async handshakesRefuseStrangers() {
    const nonce = (_frame, number) => (number === 1 ? [jsonBytes({ nonce: '00'.repeat(32) })] : [_frame]);
    const streams = tappedPipe(nonce);
    call(streams[0], ANNA).catch(() => {});
    equal(await failure(answer(streams[1], BOB)), 'not-understood');

    const stranger = async (bytes) => {
      const [caller, callee] = pipe();
      caller.write(bytes);
      const code = await failure(answer(callee, BOB));
      await callee.close();
      return [code, await caller.read(Limit.helloBytes)];
    };
    const [code, reply] = await stranger(jsonBytes({ brevanholt: [7] }));
    equal([code, new TextDecoder().decode(reply)], ['version', '{"refused":"version","brevanholt":[1]}']);
    for (const bytes of [utf8('GET / HTTP/1.1'), randomBytes(200), new Uint8Array(Limit.helloBytes + 1),
      jsonBytes({ brevanholt: [1], id: '..', key: '' })]) {
      equal(['not-understood', 'version'].includes((await stranger(bytes))[0]), true);
    }
    const [caller, callee] = pipe();
    callee.write(jsonBytes({ refused: 'busy' }));
    equal(await failure(call(caller, ANNA)), 'busy');
  },

  async recordsArriveOnceInOrderOrNotAtAll() {
    equal(await outcomeOf((frame, at) => (at === 2 ? [frame, new Uint8Array(0)] : [frame])),
      ['one', 'two', 'three', 'not-understood']);
    equal(await outcomeOf((frame, at) => (at === 1 ? [frame, frame] : [frame])), ['one', 'two', 'not-understood']);
    equal(await outcomeOf((frame, at) => (at === 1 ? [] : [frame])), ['one', 'not-understood']);
    equal(await outcomeOf((frame, at, all) => [[], [frame, all[0]], [frame]][at]), ['not-understood']);
    equal(await outcomeOf((frame, at) => {
      if (at === 1) frame[40] ^= 1;
      return [frame];
    }), ['one', 'not-understood']);

    // Sent back to where it came from, and moved to another session of the same two devices.
    const [caller, callee] = pipe();
    const [session, theirs] = await shaken([caller, callee]);
    const sealed = new SealedStream(caller, cipher, session);
    await sealed.send(Type.data, utf8('one'));
    const frame = await callee.read(Limit.frame);
    equal(await failure(new SealedStream(caller, cipher, session).open(frame)), 'not-understood');
    const [other] = await shaken(pipe());
    equal(await failure(new SealedStream(callee, cipher, { ...other, isCaller: false }).open(frame)), 'not-understood');
    equal((await new SealedStream(callee, cipher, theirs).open(frame)).type, Type.data);
  },

  async strangersCompareACodeOnceAndAreKnownByTheirKeyThen() {
    const trusts = [new Trust(memory(), new Map()), new Trust(memory(), new Map())];
    const meet = async (answers) => {
      const ends = await conversations(pipe());
      const codes = [];
      const results = await Promise.all(ends.map(async ({ talk, session }, at) => {
        const agree = async (code) => codes.push(code) && answers[at];
        const reason = await failure((async () => {
          if (!await greet(talk, session, trusts[at])) await introduce(talk, session, trusts[at], agree);
        })());
        if (reason !== 'none') await talk.close(reason);
        return reason;
      }));
      await Promise.all(ends.map(({ talk }) => talk.close()));
      return { codes: codes.length, same: new Set(codes).size <= 1, results };
    };
    equal(await meet([true, false]), { codes: 2, same: true, results: ['code-differs', 'code-differs'] });
    equal(trusts[0].of(BOB.id, BOB.key), 'new');
    equal(await meet([true, true]), { codes: 2, same: true, results: ['none', 'none'] });
    equal(await meet([false, false]), { codes: 0, same: true, results: ['none', 'none'] });

    const otherKey = new Uint8Array(65).fill(5);
    equal(trusts[0].of(BOB.id, otherKey), 'changed');
    await trusts[1].pin(ANNA.id, otherKey, 'Anna');
    equal(await meet([true, true]), { codes: 0, same: true, results: ['changed-key', 'new-key'] });
    trusts[1].agree(ANNA.id, ANNA.key);
    equal((await meet([true, true])).results, ['none', 'none']);
    equal([trusts[1].of(ANNA.id, ANNA.key), trusts[1].of(ANNA.id, otherKey)], ['trusted', 'changed']);
    await trusts[0].forget(BOB.id);
    equal(trusts[0].of(BOB.id, otherKey), 'new');
  },

  aLoudSourceTakesNothingFromTheOthers() {
    const budget = new Budget(2, 2);
    const allowed = (source, now) => budget.allows(source, now);
    equal([allowed('a', 0), allowed('a', 1), allowed('a', 2)], [true, true, false]);
    equal([allowed('b', 3), allowed('c', 4), allowed('b', 5)], [true, false, true]);
    equal([allowed('a', 1000), allowed('c', 1001)], [true, true]);
  },

  async aWrongAddressLeadsToTheNext() {
    const key = await platform.cryptoCreateIdentity();
    const bob = new Endpoint({ ...BOB, key }, async () => {});
    const decoy = await TcpListener.listen('127.0.0.2', 0);
    decoy.accept().then((connection) => connection.close());
    const addresses = new Map([['127.0.0.1', await bob.open()], ['127.0.0.2', decoy.port]]);
    const anna = new Endpoint({ ...ANNA, key }, async () => {});
    const { conversation, session } = await anna.connect({ addresses, key });
    equal(session.peer.id, BOB.id);
    await Promise.all([conversation.close(), bob.close(), decoy.close()]);
    equal(await failure(anna.connect({ addresses, key })), 'unreachable');
  },

  nothingIsReleasedThatTakesSomethingNeededWithIt() {
    const share = '/d/.NativeShareInbox/8E4D2A6C-0000-4000-8000-000000000000';
    const items = (...paths) => paths.map((path) => ({ path, name: '', size: 0, kind: 'file' }));
    equal(releasablePaths(items('/a', '/b', ''), items('/b')), ['/a']);
    equal(releasablePaths(items(`${share}/1`), items(`${share}/2`)), []);
    equal(releasablePaths(items(`${share}/1`, `${share}/2`), items('/a')), [`${share}/1`, `${share}/2`]);
    equal(releasablePaths(items('/f/a/b', '/fa'), items('/f')), ['/fa']);
  },

};
