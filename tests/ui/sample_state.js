// Made-up devices, items and transfers: one of every kind, and names that are too long.

/** @typedef {import('../../ui/model/types.js').Item} Item */
/** @typedef {import('../../ui/model/types.js').Transfer} Transfer */

const NOW = Date.now();
export const FINGERPRINT = '3F9A 0C41 77DE B210 5E8C 94A6 D033 61FB';
const LONG =
  'Ein wirklich sehr langer Name eines Ordners mit Bildern vom letzten Sommer am See (Kopie 2).tar.gz';

/** @type {(id: string, name: string, trust: 'new' | 'trusted' | 'changed') => object} */
const device = (id, name, trust) => ({
  id,
  name,
  trust,
  fingerprint: `A1B2 ${id.padStart(4, '0').toUpperCase()} 77DE B210 5E8C 94A6 D033 61FB`,
});

export const DEVICES = [
  device('1', 'Pixel 9', 'trusted'),
  device('2', 'Workshop laptop', 'new'),
  device('3', 'The living room computer with a name that goes on for ever', 'trusted'),
];

/** @type {Item[]} */
export const OUTBOX = [
  { path: '/home/me/holiday.jpg', name: 'holiday.jpg', size: 4_812_345, kind: 'file' },
  { path: '/home/me/Photos', name: 'Photos', size: 1_284_000_000, kind: 'directory' },
  { path: `/home/me/${LONG}`, name: LONG, size: 73_000, kind: 'file' },
  {
    path: '',
    name: 'Text',
    size: 41,
    kind: 'text',
    text: 'The wifi password is correct horse battery',
  },
];

/**
 * @param {Partial<Transfer>} given
 * @returns {Transfer}
 */
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
  offered: [],
  offeredCount: 0,
  locations: [],
  text: null,
  when: NOW - 60_000,
  ...given,
});

const complete = { state: /** @type {const} */ ('complete'), bytesDone: 80_000_000 };

export const RECENTS = [
  transfer({
    ...complete,
    id: 'r1',
    name: 'sunset.png',
    locations: ['/tmp/sunset.png'],
    bytesTotal: 3_200_000,
  }),
  transfer({ ...complete, id: 'r2', name: LONG, locations: ['/tmp/x'], fileCount: 214 }),
  transfer({
    ...complete,
    id: 'r3',
    name: 'Text',
    bytesTotal: 61,
    text: 'See you at eight.\nhttps://example.org/map?id=1&x=<b>2</b>',
  }),
  transfer({ ...complete, id: 'r4', name: '3 files', direction: 'send', fileCount: 3 }),
  transfer({
    id: 'r5',
    state: 'failed',
    direction: 'send',
    name: 'backup.iso',
    bytesTotal: 4_700_000_000,
    message: 'The connection to Pixel 9 was lost after 1.2 GB.',
  }),
  transfer({ id: 'r6', state: 'failed', name: 'movie.mkv', message: 'The disk is full.' }),
  transfer({
    id: 'r7',
    state: 'cancelled',
    direction: 'send',
    name: 'Photos',
    when: NOW - 86_400_000 * 3,
  }),
  transfer({
    id: 'r8',
    state: 'declined',
    direction: 'send',
    name: 'holiday.jpg',
    deviceName: 'Workshop laptop',
  }),
];

export const ASKING = transfer({
  id: 'a1',
  state: 'asking',
  name: '12 files',
  fileCount: 12,
  bytesTotal: 512_000_000,
  offered: ['IMG_2041.jpg', 'IMG_2042.jpg', LONG],
  offeredCount: 12,
});
export const CONFIRMING = transfer({
  id: 'a2',
  state: 'confirming',
  direction: 'send',
  code: '482913',
  deviceName: 'Workshop laptop',
  name: 'holiday.jpg',
});
export const ACTIVE = [
  transfer({ id: 's1', bytesDone: 31_000_000, rate: 5_200_000, secondsLeft: 9.4 }),
  transfer({
    id: 's2',
    direction: 'send',
    name: 'Photos',
    fileCount: 214,
    bytesTotal: 1_284_000_000,
    bytesDone: 1_100_000_000,
    rate: 38_000_000,
    secondsLeft: 5,
  }),
  transfer({
    id: 's3',
    direction: 'send',
    state: 'asking',
    name: LONG,
    deviceName: DEVICES[2].name,
  }),
  transfer({ id: 's4', direction: 'send', state: 'connecting', name: 'notes.odt' }),
];

export const SETTINGS = {
  receiveFolder: 'Brevanholt',
  isVisible: true,
  launchAtStartup: false,
  notifications: 'unknown',
  showsConsole: false,
};

/** What the window can show, by name. */
export const STATES = {
  empty: {},
  ready: { devices: DEVICES, outbox: OUTBOX },
  asking: { devices: DEVICES, transfers: [ASKING, ...RECENTS.slice(0, 2)] },
  confirming: { devices: DEVICES, transfers: [CONFIRMING] },
  active: { devices: DEVICES, transfers: [...ACTIVE, ...RECENTS.slice(0, 1)] },
  recents: { devices: DEVICES.slice(0, 1), transfers: RECENTS },
  busy: {
    devices: DEVICES.slice(0, 2),
    outbox: OUTBOX.slice(0, 2),
    transfers: [...ACTIVE.slice(0, 2), RECENTS[0], RECENTS[2], RECENTS[3]],
  },
  changed: {
    devices: [DEVICES[0], device('4', 'Workshop laptop', 'changed')],
    outbox: OUTBOX.slice(0, 1),
  },
  dragging: { devices: DEVICES, outbox: OUTBOX.slice(0, 2), isDragOver: true },
  long: {
    devices: DEVICES,
    settings: { ...SETTINGS, showsConsole: true },
    self: { name: `${DEVICES[2].name}, and on`, fingerprint: FINGERPRINT, version: '1.0.0' },
  },
  problem: {
    problem:
      'The network cannot be used: there is no connection. What you choose to send stays here.',
  },
};
