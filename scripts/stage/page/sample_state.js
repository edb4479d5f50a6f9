// Made-up devices, items and transfers: one of every kind, and names that are too long.

import { INITIAL_SETTINGS } from './model/settings.js';

export const FINGERPRINT = '3F9A 0C41 77DE B210 5E8C 94A6 D033 61FB';
const LONG =
  'Ein wirklich sehr langer Name eines Ordners mit Bildern vom letzten Sommer am See (Kopie 2).tar.gz';

const device = (id, name, trust) => ({
  id,
  key: `key ${id}`,
  name,
  trust,
  fingerprint: FINGERPRINT,
});
export const DEVICES = [
  device('1', 'Pixel 9', 'trusted'),
  device('2', 'Workshop laptop', 'new'),
  device('3', 'The living room computer with a name that goes on for ever', 'trusted'),
];

export const OUTBOX = [
  { path: '/home/me/holiday.jpg', name: 'holiday.jpg', size: 4_812_345, kind: 'file' },
  { path: '/home/me/Photos', name: 'Photos', size: 1_284_000_000, kind: 'directory' },
  { path: `/home/me/${LONG}`, name: LONG, size: 73_000, kind: 'file' },
  { path: '', name: 'Text', size: 36, kind: 'text', text: 'The wifi password is correct horse' },
];

const node = (name, given) => ({ name, kind: 'file', size: 400_000, fileCount: 1, ...given });
const folder = (name, children) =>
  node(name, { kind: 'directory', size: 8_000_000, fileCount: 20, children });

export const transfer = (given) => ({
  id: 'transfer',
  direction: 'receive',
  deviceId: '1',
  deviceName: 'Pixel 9',
  name: 'holiday.jpg',
  state: 'active',
  code: null,
  message: null,
  fileCount: 1,
  bytesTotal: 80_000_000,
  bytesDone: 0,
  rate: 0,
  secondsLeft: null,
  items: [],
  contents: [node(given.name ?? 'holiday.jpg')],
  itemCount: 1,
  isConfirmed: false,
  locations: [],
  text: null,
  number: '0'.repeat(32),
  isStranger: false,
  isStalled: false,
  failures: [],
  failureCount: 0,
  note: null,
  when: Date.now() - 60_000,
  ...given,
});
const received = (given) => transfer({ state: 'complete', bytesDone: 80_000_000, ...given });
const sent = (given) => transfer({ direction: 'send', ...given });

export const RECENTS = [
  received({ id: 'r1', name: 'sunset.png', locations: ['/tmp/sunset.png'] }),
  received({
    id: 'r2',
    name: 'x.tar and 2 more',
    contents: [node('x.tar'), node('y.txt'), folder('Photos', [])],
    locations: ['/tmp/x.tar', '/tmp/y.txt', `/tmp/${LONG}`],
    itemCount: 3,
    fileCount: 214,
  }),
  received({
    id: 'r3',
    name: 'Text',
    contents: [node('Text', { kind: 'text' })],
    text: 'See you at eight.\nhttps://example.org/map?x=<b>2</b>',
  }),
  sent({ id: 'r5', state: 'failed', name: 'backup.iso', message: 'The connection was lost.' }),
  transfer({ id: 'r6', state: 'failed', name: 'movie.mkv', message: 'The disk is full.' }),
  sent({ id: 'r7', state: 'cancelled', name: 'Photos', when: Date.now() - 86_400_000 * 3 }),
  sent({ id: 'r8', state: 'declined', deviceName: 'Workshop laptop' }),
];
export const ASKING = transfer({
  id: 'a1',
  state: 'asking',
  name: 'IMG_2041.jpg and 3 more',
  fileCount: 23,
  contents: [
    node('IMG_2041.jpg'),
    node('report.pdf'),
    node(LONG),
    folder('Trip', [node('map.png'), folder('Day 1', [node('sea.mp4')])]),
  ],
  itemCount: 4,
});
export const CONFIRMING = sent({
  id: 'a2',
  state: 'confirming',
  code: '482913',
  deviceName: 'Workshop laptop',
});
export const ACTIVE = [
  transfer({ id: 's1', bytesDone: 31_000_000, rate: 5_200_000, secondsLeft: 9.4 }),
  sent({ id: 's2', name: 'Photos', bytesDone: 70_000_000, rate: 38_000_000, secondsLeft: 5 }),
  sent({ id: 's3', state: 'asking', name: LONG, deviceName: DEVICES[2].name }),
  sent({ id: 's4', state: 'connecting', name: 'notes.odt' }),
];

export const KNOWN = [
  ['04ab', 'Alice', 1e9, true],
  ['04cd', 'Büro', 0, false],
].map(([key, name, acceptsUpTo, isNear]) => ({
  key,
  name,
  acceptsUpTo,
  isNear,
  fingerprint: FINGERPRINT,
  since: Date.UTC(2025, 2, 14),
  seen: Date.UTC(2026, 10, 2, 9, 30),
}));

/** What the window can show, by name. */
export const STATES = {
  empty: {},
  ready: { devices: DEVICES, outbox: OUTBOX },
  requests: { devices: DEVICES, transfers: [CONFIRMING, ASKING] },
  active: { devices: DEVICES, transfers: ACTIVE },
  recents: { devices: DEVICES.slice(0, 1), transfers: RECENTS },
  changed: { devices: [{ ...DEVICES[1], trust: 'changed' }], outbox: OUTBOX.slice(0, 1) },
  dragging: {
    devices: DEVICES,
    outbox: OUTBOX,
    drag: { x: -1, y: -1, hasFiles: true, folders: ['Photos'] },
  },
  waiting: {
    devices: DEVICES,
    transfers: [{ ...CONFIRMING, isConfirmed: true }],
    suggestion: { text: 'Removed 3 items.', label: 'Undo' },
  },
  known: { devices: DEVICES, knownDevices: KNOWN },
  namesakes: {
    devices: [DEVICES[0], { ...DEVICES[1], name: 'Pixel 9', fingerprint: `A1B2 ${FINGERPRINT}` }],
    outbox: OUTBOX,
    drag: { x: 200, y: 500, hasFiles: true, folders: [] },
  },
  long: {
    devices: DEVICES,
    settings: { ...INITIAL_SETTINGS, showsConsole: true },
    self: { name: `${DEVICES[2].name}, and on`, fingerprint: FINGERPRINT, version: '1.0.0' },
    problem: 'The network cannot be used. What you choose to send stays here.',
  },
};

/** More than the list of transfers keeps, whose rows have names alike. */
export const MANY = {
  devices: DEVICES,
  outbox: OUTBOX,
  transfers: [
    ACTIVE[0],
    ...Array.from({ length: 500 }, (_, at) => ({
      ...RECENTS[at % RECENTS.length],
      id: `m${at}`,
      when: Date.now() - at * 86_400_000,
    })),
  ],
};
