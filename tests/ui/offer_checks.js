// What announcements and offers may say, and how content is cut into records.

import { equal } from './harness.js';
import { bob, refusal } from './people.js';
import { decodeAnnouncement, encodeAnnouncement } from './protocol/announcement.js';
import { hex, jsonBytes, randomBytes, utf8 } from './protocol/bytes.js';
import { Limit } from './protocol/limits.js';
import { ManifestReader, manifestRecords } from './protocol/manifest.js';
import { ReceivablePaths } from './protocol/receivable_names.js';
import { releasablePaths } from './model/items.js';
import { QuestionGate } from './model/question_gate.js';

const BOB = bob.party;

export const offerChecks = {
  announcementsCarryADeviceAndNothingElse() {
    const here = { kind: 'here', ...BOB, port: 4711 };
    equal(hex(decodeAnnouncement(encodeAnnouncement(here)).key), hex(BOB.key));
    const long = encodeAnnouncement({ ...here, name: '日'.repeat(900) });
    equal(long.length <= Limit.datagram, true);
    equal([...decodeAnnouncement(long).name].length, Limit.nameCharacters);
    const nameOf = (name) => decodeAnnouncement(encodeAnnouncement({ ...here, name })).name;
    equal(nameOf('  Bob\n\u202egpj.exe\u0000 '), 'Bob_gpj.exe_');
    equal(nameOf('\u200b'), 'Unnamed device');

    const good = {
      brevanholt: 2,
      kind: 'here',
      id: BOB.id,
      name: 'Bob',
      port: 1,
      key: hex(BOB.key),
    };
    const bad = [
      { brevanholt: 1 },
      { kind: 'there' },
      { id: '../../x' },
      { port: 0 },
      { port: 65_536 },
      { port: '1' },
      { key: 'zz' },
      { key: hex(BOB.key).slice(2) },
      { key: null },
      { pad: 'x'.repeat(1200) },
    ];
    equal(
      bad.map((change) => decodeAnnouncement(jsonBytes({ ...good, ...change }))),
      bad.map(() => null),
    );
    equal([utf8(''), utf8('[]'), utf8('null'), randomBytes(300)].map(decodeAnnouncement), [
      null,
      null,
      null,
      null,
    ]);
  },

  async manifestsAreBounded() {
    const entries = [
      { kind: 'directory', path: 'Photos', size: 0, modified: 0 },
      { kind: 'file', path: 'Photos/it\'s "100%".jpg', size: 2 ** 40, modified: 1_700_000_000_123 },
      { kind: 'text', path: 'Text', size: 5, modified: 0 },
      { kind: 'text', path: 'Text', size: 5, modified: 0 },
      ...Array.from({ length: 1200 }, (_, at) => ({
        kind: 'file',
        path: `Photos/${'ü'.repeat(at % 100)}${at}`,
        size: at,
        modified: at,
      })),
    ];
    const read = (records) => {
      const reader = new ManifestReader();
      for (const record of records) reader.add(record);
      return reader.finish();
    };
    const records = [...manifestRecords(entries)];
    equal([read(records), records.every(({ length }) => length <= Limit.control)], [entries, true]);
    const file = (path, size = 1) => [0, path, size, 0];
    const bad = [
      {},
      [],
      [[0, 'a', 1]],
      [[3, 'a', 0, 0]],
      [['0', 'a', 0, 0]],
      [[0, 'a', 1, -1]],
      [file('a', -1)],
      [file('a', 0.5)],
      [[1, 'a', 1, 0]],
      [file('a', 2 ** 53)],
      [file('a', 2 ** 53 - 1), file('b')],
      [
        [2, 'a', Limit.textBytes, 0],
        [2, 'a', 1, 0],
      ],
      [file('a'), file('a')],
      [file('a'), [1, 'a', 0, 0]],
      [file('a'), file('a/b')],
      ...[
        '',
        '/',
        '/etc/passwd',
        'a/../../b',
        '..',
        './a',
        'a//b',
        'a/',
        ' a',
        'a\0b',
        'a:b',
        'a\\b',
        'a\nb',
        '\ud800',
        'x'.repeat(256),
        `${'a/'.repeat(Limit.depth)}b`,
        `${`${'x'.repeat(200)}/`.repeat(6)}x`,
      ].map((path) => [file(path)]),
    ];
    for (const list of bad) equal(await refusal(() => read([jsonBytes(list)])), 'not-understood');
    const equals = Array.from({ length: 12_000 }, () => file('a'));
    const began = performance.now();
    equal(await refusal(() => read([jsonBytes(equals)])), 'not-understood');
    equal(performance.now() - began < 1000, true);
  },

  namesThatCannotBeReceivedAreMappedToOthers() {
    const paths = new ReceivablePaths();
    const taken = (path, kind = 'file') => paths.take(path, kind);
    equal(taken('2026-11-23 07:30:12.ogg'), '2026-11-23 07-30-12.ogg');
    equal(taken('2026-11-23 07-30-12.ogg'), '2026-11-23 07-30-12 (1).ogg');
    equal(
      [taken('a:b', 'directory'), taken('a:b/c\\d'), taken('a-b')],
      ['a-b', 'a-b/c_d', 'a-b (1)'],
    );
    equal(
      [taken('P', 'directory'), taken('P', 'directory'), taken('P/a'), taken('P/a')],
      ['P', 'P', 'P/a', 'P/a (1)'],
    );
    equal([taken(' x '), taken('\u0001\u0002'), taken('   ')], ['x', '__', '_']);
    const long = taken(`${'日'.repeat(200)}.jpeg`);
    equal([utf8(long).length <= Limit.nameBytes, long.endsWith('日.jpeg')], [true, true]);
    equal(taken(`${'日'.repeat(200)}.jpeg`).endsWith('日 (1).jpeg'), true);
    equal(taken(`${'a/'.repeat(Limit.depth)}b`), null);
    for (let at = 0; at < 12_000; ++at) taken('same');
    equal(taken('same'), 'same (12000)');
  },

  questionsOfStrangersArePacedAndTakeNothingFromKnownDevices() {
    const gate = new QuestionGate();
    const stranger = (at) => ({ address: `10.0.0.${at}`, device: `s${at}`, isKnown: false });
    const known = (at) => ({ address: '10.0.0.1', device: `k${at}`, isKnown: true });
    const asks = [1, 2, 3, 4, 5].map(stranger);
    equal(
      asks.map((one) => gate.begin(one, 0)),
      [true, true, true, true, false],
    );
    equal([gate.begin(known(1), 0), gate.begin(known(1), 0)], [true, false]);
    let now = 0;
    for (const pause of [5000, 10_000, 20_000]) {
      gate.end(asks[0], false, now);
      const other = { ...asks[0], device: 'another' };
      equal([gate.begin(other, now + pause - 1), gate.begin(asks[0], now + pause)], [false, true]);
      now += pause;
    }
    gate.end(asks[0], true, now);
    equal(gate.begin(asks[0], now), true);
  },

  async nothingIsReleasedThatTakesSomethingNeededWithIt() {
    const share = '/d/.NativeShareInbox/8E4D2A6C-0000-4000-8000-000000000000';
    const items = (...paths) => paths.map((path) => ({ path, name: '', size: 0, kind: 'file' }));
    equal(await releasablePaths(items('/a', '/b', ''), items('/b')), ['/a']);
    equal(await releasablePaths(items(`${share}/1`), items(`${share}/2`)), []);
    equal(await releasablePaths(items(`${share}/1`, `${share}/2`), items('/a')), [
      `${share}/1`,
      `${share}/2`,
    ]);
    equal(await releasablePaths(items('/f/a/b', '/fa'), items('/f')), ['/fa']);
  },
};
