// The list of devices, while strangers on the network send what they like.

import { TcpListener } from './engine/sockets.js';
import { equal } from './harness.js';
import { anna, bob, eve, failure } from './people.js';
import { platform } from './platform.js';
import { Budget } from './protocol/budget.js';
import { hex } from './protocol/bytes.js';
import { Endpoint } from './protocol/endpoint.js';
import { Limit, Time } from './protocol/limits.js';
import { Neighbours } from './protocol/neighbours.js';
import { Trust } from './model/trust.js';

const number = (value) => value.toString(16).padStart(8, '0');
const strangerOf = (value) => ({
  id: `${number(value)}-0000-4000-8000-000000000000`,
  key: new Uint8Array(65).fill(value % 256),
  name: `Stranger ${value}`,
  port: 1,
});
const heardBob = { ...bob.party, port: 45457 };

export const discoveryChecks = {
  aLoudSourceTakesNothingFromTheOthers() {
    const budget = new Budget(2, 4);
    const allowed = (source, now) => budget.allows(source, now);
    equal([allowed('a', 0), allowed('a', 1), allowed('a', 2)], [true, true, false]);
    equal([allowed('b', 3), allowed('c', 4), allowed('d', 5)], [true, true, false]);
    equal([allowed('a', 1000), allowed('d', 1001)], [true, true]);
  },

  knownDevicesAlwaysFitAndStrangersAreFew() {
    const neighbours = new Neighbours(({ id }) => id === bob.party.id);
    for (let at = 0; at < 50; ++at) neighbours.hear(strangerOf(at), '10.0.0.9', 0);
    equal(neighbours.list.length, Limit.identitiesPerSource);
    for (let at = 0; at < 2 * Limit.devices; ++at)
      neighbours.hear(strangerOf(at), `10.1.${at >> 8}.${at % 256}`, 0);
    equal(neighbours.list.length, Limit.devices);
    equal(neighbours.hear(heardBob, '10.0.0.2', 0), true);
    equal(neighbours.list.length, Limit.devices + 1);
  },

  whatIsSaidOfOneAddressChangesNothingAtTheOthers() {
    const neighbours = new Neighbours(() => true);
    neighbours.hear(heardBob, '10.0.0.2', 0);
    neighbours.prove(bob.party, '10.0.0.2', 0);
    for (let at = 0; at < 100; ++at) {
      neighbours.hear({ ...heardBob, port: 1 }, `10.0.9.${at}`, 10);
      neighbours.bye(bob.party, `10.0.9.${at}`, 10);
    }
    const [{ addresses }] = neighbours.list;
    equal([addresses.size, addresses.get('10.0.0.2').port], [Limit.addresses, 45457]);
    neighbours.expire(10 + Time.expireAfterBye);
    equal([...addresses.keys()], ['10.0.0.2']);
    neighbours.bye(bob.party, '10.0.0.2', 4000);
    neighbours.hear(heardBob, '10.0.0.2', 4000 + Time.announce.longest);
    equal(neighbours.expire(4000 + Time.expireAfterBye), false);
    neighbours.bye(bob.party, '10.0.0.2', 8000);
    equal([neighbours.expire(8000 + Time.expireAfterBye), neighbours.list], [true, []]);
  },

  aKnownDeviceHasTheNameThatWasKeptWithItsKey() {
    const pins = new Map([[bob.party.id, { key: hex(bob.party.key), name: 'Bob’s laptop' }]]);
    const trust = new Trust({ save: async () => {} }, pins);
    equal(trust.nameOf({ ...bob.party, name: 'Carol (boss)' }), 'Bob’s laptop');
    equal(trust.nameOf({ ...eve.party, name: 'Bob’s laptop' }) === 'Bob’s laptop', false);
  },

  async aWrongAddressCostsAMomentOnly() {
    const key = await platform.cryptoCreateIdentity();
    const partyOf = ({ party }) => ({ ...party, key });
    const ours = new Endpoint(
      partyOf(bob),
      () => true,
      async () => {},
    );
    const [silent, closing] = await Promise.all(
      ['127.0.0.2', '127.0.0.3'].map((address) => TcpListener.listen(address, 0)),
    );
    closing.accept().then((connection) => connection.close());
    const place = (port) => ({ port, until: Infinity, proven: -Infinity });
    const addresses = new Map([
      ['127.0.0.1', place(await ours.open())],
      ['127.0.0.2', place(silent.port)],
      ['127.0.0.3', place(closing.port)],
    ]);
    const caller = new Endpoint(
      partyOf(anna),
      () => true,
      async () => {},
    );
    const began = performance.now();
    equal((await caller.locate({ addresses, key })).address, '127.0.0.1');
    const { conversation, session, address } = await caller.connect({ addresses, key });
    equal([session.peer.id, address], [bob.party.id, '127.0.0.1']);
    equal(performance.now() - began < 5000, true);
    await Promise.all([conversation.close(), ours.close(), silent.close(), closing.close()]);
    addresses.delete('127.0.0.2');
    equal(await failure(caller.connect({ addresses, key })), 'unreachable');
  },
};
