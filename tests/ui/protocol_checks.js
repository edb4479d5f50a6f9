// What the handshake and the records promise, checked in the engine that runs them, with the host's own
// cryptography.

import { equal } from './harness.js';
import { anna, answers, bob, calls, conversations, eve, failure, shaken } from './people.js';
import { pipe, tappedPipe } from './pipe.js';
import { platform } from './platform.js';
import { equalBytes, hex, jsonBytes, randomBytes, unhex, utf8 } from './protocol/bytes.js';
import { Type } from './protocol/conversation.js';
import { lastingKey } from './protocol/endpoint.js';
import { probe } from './protocol/handshake.js';
import { greet, introduce } from './protocol/introduction.js';
import { agreed, agreedWithLasting, connectionKey, KeySchedule } from './protocol/key_schedule.js';
import { Limit } from './protocol/limits.js';
import { Trust } from './model/trust.js';

const memory = () => ({ load: async () => null, save: async () => {} });

export const protocolChecks = {
  async theHostAgreesWithAConnectionsKey() {
    const own = await connectionKey();
    const key = await platform.cryptoDeriveSharedKey(own.publicKey);
    equal(hex(key), hex(await agreedWithLasting(own, await platform.cryptoCreateIdentity())));
    const data = utf8('naïve 🎈');
    const sealed = await platform.cryptoEncrypt(key, data);
    equal(hex(await bob.lasting.open(key, sealed)), hex(data));
    const answered = await bob.lasting.seal(key, data);
    equal(hex(await platform.cryptoDecrypt(key, answered)), hex(data));
    answered[20] ^= 1;
    const noPoint = new Uint8Array(65).fill(4);
    for (const refused of [
      platform.cryptoDecrypt(key, answered),
      platform.cryptoDecrypt(key, answered.slice(0, 12)),
      platform.cryptoEncrypt(key.slice(5), data),
      platform.cryptoDeriveSharedKey(noPoint),
    ]) {
      equal(await failure(refused), 'platform_error');
    }
    const [caller, callee] = pipe();
    callee.write(jsonBytes({ brevanholt: 2, share: hex(noPoint) }));
    equal(await failure(probe(caller, lastingKey)), 'not-understood');
  },

  // Made with the functions of tests/endtoend/peer.py, for the private keys 0x1111 and 0x2222.
  async theDerivationGivesWhatPythonsCryptographyGives() {
    const jwk = {
      kty: 'EC',
      crv: 'P-256',
      x: 'Dcx2SMeKMRjyYShm_oPvGfQDBPYjOZ4SEaEPKz0cBc8',
      y: 'MOgCdne8uRKUPpn_cRQOqbwkcTvht1wx_0BUckxPnQA',
      d: `${'A'.repeat(40)}ERE`,
    };
    const curve = { name: 'ECDH', namedCurve: 'P-256' };
    const privateKey = await crypto.subtle.importKey('jwk', jwk, curve, false, ['deriveBits']);
    const other = unhex(
      '04a62f048f367359809c2d46c2049d7d7bf268c3c073c472753cb18a24a8ad20b1' +
        'caccf8104b666795c7f35dac9dc444b3c2c61978198c49859955b99956da5edb',
      65,
    );
    const schedule = await KeySchedule.begin();
    await schedule.mixHash(utf8('first'));
    await schedule.mixHash(other);
    const code = await schedule.code();
    await schedule.mixKey(await agreed({ privateKey }, other));
    const sealed = [await schedule.seal(utf8('one')), await schedule.seal(utf8('two'))];
    await schedule.mixKey(await agreedWithLasting({ privateKey }, other));
    sealed.push(await schedule.seal(utf8('three')));
    const keys = await schedule.split();
    equal(
      [code, ...sealed.map(hex)],
      [
        '683600',
        '59875932f60a54b07b4fbafa29b60f6ab77460',
        '377a2656ad72aa174236ed29faaa34817a5ff6',
        'c1f0ad752420ee7f152590f7ef92d04d5dc29f6a2b',
      ],
    );
    equal(
      [hex(keys.caller), hex(keys.calleeConfirms)],
      [
        '97bc64763a01e1d5fdd12e5e84b8349048db82a82541ce1569091ab2fe7f6ffc',
        '258b50f1f8c7b7e7d74c997b5bb001312a51458f72988d7bee34d194a97fb821',
      ],
    );
  },

  async handshakesEndInOneCodeAndFreshKeys() {
    const [one, other] = await shaken(pipe());
    equal([one.code, one.peer.name, other.peer.name], [other.code, 'Bob', 'Anna']);
    equal(/^\d{6}$/.test(one.code), true);
    equal(
      [hex(one.keys.send), hex(one.keys.receive)],
      [hex(other.keys.receive), hex(other.keys.send)],
    );
    const [again] = await shaken(pipe());
    const keys = [one.keys.send, one.keys.receive, again.keys.send, again.keys.receive].map(hex);
    equal(new Set(keys).size, 4);
  },

  async listenersLearnNoNamesAndCallersProveTheOtherSideFirst() {
    const seen = [];
    await shaken(
      tappedPipe((frame) => {
        seen.push(frame);
        return [frame];
      }),
    );
    const wire = new TextDecoder('latin1').decode(new Uint8Array(seen.flatMap((one) => [...one])));
    const key = new TextDecoder('latin1').decode(anna.party.key);
    equal(
      [anna.party.id, 'Anna', key].filter((text) => wire.includes(text)),
      [],
    );
    equal(seen.map(({ length }) => length).slice(1), [65, 65 + 16 + 512 + 16, 60]);

    const [caller, callee] = pipe();
    const answered = failure(answers(callee));
    equal((await probe(caller, anna.lasting)).name, 'Bob');
    await caller.close();
    equal(await answered, 'lost');
    const streams = pipe();
    failure(answers(streams[1], eve)).then(() => streams[1].close());
    const isBob = (peer) => equalBytes(peer.key, bob.party.key);
    equal(await failure(calls(streams[0], anna, isBob)), 'other-key');
  },

  async handshakesRefuseWhoeverHasNotTheKeyOrChangesAFrame() {
    // Somebody with Anna's public key alone, and with Bob's.
    const claims = (who, claimed) => ({ party: claimed.party, lasting: who.lasting });
    const first = pipe();
    calls(first[0], claims(eve, anna)).catch(() => first[0].close());
    equal(await failure(answers(first[1])), 'not-understood');
    const second = pipe();
    answers(second[1], claims(eve, bob)).catch(() => second[1].close());
    equal(await failure(calls(second[0])), 'not-understood');

    for (const changed of [0, 1, 2, 3]) {
      const streams = tappedPipe((frame, number) => {
        if (number === changed) frame[frame.length - 3] ^= 1;
        return [frame];
      });
      const caller = failure(calls(streams[0])).finally(() => streams[0].close());
      const callee = failure(answers(streams[1])).finally(() => streams[1].close());
      equal((await callee) === 'none', false);
      equal((await caller) === 'none', false);
    }
  },

  async handshakesRefuseStrangers() {
    const stranger = async (bytes) => {
      const [caller, callee] = pipe();
      caller.write(bytes);
      const code = await failure(answers(callee));
      await callee.close();
      return [code, await caller.read()];
    };
    const [code, reply] = await stranger(jsonBytes({ brevanholt: [1] }));
    equal(
      [code, new TextDecoder().decode(reply)],
      ['version', '{"refused":"version","brevanholt":[2]}'],
    );
    for (const bytes of [
      utf8('GET / HTTP/1.1'),
      randomBytes(200),
      new Uint8Array(Limit.strangersFrame + 1),
      jsonBytes({ brevanholt: [2], commitment: '' }),
    ]) {
      equal(['not-understood', 'version'].includes((await stranger(bytes))[0]), true);
    }
    const [caller, callee] = pipe();
    callee.write(jsonBytes({ refused: 'busy' }));
    equal(await failure(calls(caller)), 'busy');
  },

  async strangersHaveFewAndSmallRecords() {
    const from = async (send) => {
      const [caller, callee] = await conversations();
      send(caller.talk).catch(() => {});
      const code = await failure(
        (async () => {
          for (;;) await callee.talk.next();
        })(),
      );
      await Promise.all([caller.talk.close(), callee.talk.close()]);
      return code;
    };
    const many = (count, type, body) => async (talk) => {
      for (let at = 0; at < count; ++at) await talk.send(type, body);
      await talk.close('cancelled');
    };
    equal(await from(many(Limit.strangersRecords - 1, Type.offer)), 'cancelled-there');
    equal(await from(many(Limit.strangersRecords + 1, Type.offer)), 'not-understood');
    equal(await from(many(Limit.pings, Type.ping)), 'cancelled-there');
    equal(await from(many(Limit.pings + 3, Type.ping)), 'not-understood');
    equal(await from(many(1, Type.ping, utf8('x'))), 'not-understood');
    equal(await from(many(1, Type.offer, new Uint8Array(Limit.strangersFrame))), 'not-understood');
  },

  async strangersCompareACodeOnceAndAreKnownByTheirKeyThen() {
    const trusts = [new Trust(memory(), new Map()), new Trust(memory(), new Map())];
    const meet = async (says) => {
      const ends = await conversations();
      const codes = [];
      const results = await Promise.all(
        ends.map(async ({ talk, session }, at) => {
          const agree = async (code) => codes.push(code) && says[at];
          const reason = await failure(
            (async () => {
              if (!(await greet(talk, session, trusts[at])))
                await introduce(talk, session, trusts[at], agree);
            })(),
          );
          if (reason !== 'none') await talk.close(reason);
          return reason;
        }),
      );
      await Promise.all(ends.map(({ talk }) => talk.close()));
      return { codes: codes.length, same: new Set(codes).size <= 1, results };
    };
    equal(await meet([true, false]), {
      codes: 2,
      same: true,
      results: ['code-differs', 'code-differs'],
    });
    equal(trusts[0].of(bob.party.id, bob.party.key), 'new');
    equal(await meet([true, true]), { codes: 2, same: true, results: ['none', 'none'] });
    equal(await meet([false, false]), { codes: 0, same: true, results: ['none', 'none'] });

    const otherKey = new Uint8Array(65).fill(5);
    equal(trusts[0].of(bob.party.id, otherKey), 'changed');
    await trusts[1].pin(anna.party.id, otherKey, 'Anna');
    equal(await meet([true, true]), { codes: 0, same: true, results: ['changed-key', 'new-key'] });
    trusts[1].agree(anna.party.id, anna.party.key);
    equal((await meet([true, true])).results, ['none', 'none']);
    equal(
      [trusts[1].of(anna.party.id, anna.party.key), trusts[1].of(anna.party.id, otherKey)],
      ['trusted', 'changed'],
    );
    await trusts[0].forget(hex(bob.party.key));
    equal(trusts[0].of(bob.party.id, otherKey), 'new');
  },
};
