// Feeds changed bytes to the page's parsers of network data: frames, announcements, both sides of the
// handshake, manifests and control records. A case passes if it ends with a TransferError or is accepted;
// any other error, or a case that takes long, is a fault. Prints how the cases ended.
//
//     node fuzz/protocol_fuzzer.mjs [CASES] [SEED]

import { cpSync, mkdtempSync, rmSync, writeFileSync } from 'node:fs';
import { tmpdir } from 'node:os';
import { join } from 'node:path';
import { fileURLToPath, pathToFileURL } from 'node:url';

const source = fileURLToPath(new URL('..', import.meta.url));
const [count = 100_000, seed = 1] = process.argv.slice(2).map(Number);
const LONG = 250; // ms

// The peers' modules stand beside those of the page.
const folder = mkdtempSync(join(tmpdir(), 'brevanholt-fuzz-'));
process.on('exit', () => rmSync(folder, { recursive: true }));
cpSync(join(source, 'ui'), folder, { recursive: true });
cpSync(join(source, 'scripts/stage/page'), folder, { recursive: true });
writeFileSync(join(folder, 'package.json'), '{"type":"module"}');
const load = (path) => import(pathToFileURL(join(folder, path)));

const { pipe } = await load('pipe.js');
const { anna, bob, calls, answers, shaken } = await load('people.js');
const { decodeAnnouncement, encodeAnnouncement } = await load('protocol/announcement.js');
const { jsonBytes, joined } = await load('protocol/bytes.js');
const { contentOf } = await load('protocol/conversation.js');
const { TransferError } = await load('protocol/errors.js');
const { FrameStream } = await load('protocol/frames.js');
const { ManifestReader, manifestRecords } = await load('protocol/manifest.js');

/** A seeded generator (mulberry32): the same seed gives the same cases. */
function generator(start) {
  let state = start;
  return () => {
    state = (state + 0x6d2b79f5) | 0;
    let mixed = Math.imul(state ^ (state >>> 15), 1 | state);
    mixed = (mixed + Math.imul(mixed ^ (mixed >>> 7), 61 | mixed)) ^ mixed;
    return ((mixed ^ (mixed >>> 14)) >>> 0) / 2 ** 32;
  };
}
const random = generator(seed);
const below = (limit) => Math.floor(random() * limit);
const pick = (list) => list[below(list.length)];

const ODD = ['0', '-1', '1e999', '9007199254740993', 'null', '[]', '{}', '""', '"\\ud800"', 'true'];
const MUTATIONS = [
  (bytes) => bytes.with(below(bytes.length), below(256)),
  (bytes) => bytes.with(below(bytes.length), bytes[below(bytes.length)] ^ (1 << below(8))),
  (bytes) => bytes.subarray(0, below(bytes.length)),
  (bytes) => joined(bytes, bytes.subarray(below(bytes.length))),
  (bytes) => {
    const at = below(bytes.length);
    return joined(
      bytes.subarray(0, at),
      bytes.subarray(Math.min(bytes.length, at + 1 + below(16))),
    );
  },
  (bytes) => {
    const at = below(bytes.length);
    return joined(
      bytes.subarray(0, at),
      new Uint8Array(1 + below(64)).fill(below(256)),
      bytes.subarray(at),
    );
  },
  // A value of JSON in the place of another.
  (bytes) => {
    const text = new TextDecoder('latin1').decode(bytes);
    const places = [...text.matchAll(/"(?:[^"\\]|\\.)*"|-?\d+/g)];
    if (places.length === 0) return bytes;
    const { index, 0: old } = pick(places);
    return Uint8Array.from(
      text.slice(0, index) + pick(ODD) + text.slice(index + old.length),
      (letter) => letter.charCodeAt(0),
    );
  },
];

function mutated(bytes) {
  let changed = bytes;
  for (let times = 1 + below(3); times > 0 && changed.length > 0; --times)
    changed = pick(MUTATIONS)(changed);
  return changed;
}

/** The frames that one side of an honest handshake writes, for the other side to read changed. */
async function recorded() {
  const sides = { caller: [], callee: [] };
  const [caller, callee] = pipe();
  for (const [name, stream] of Object.entries({ caller, callee })) {
    const write = stream.write.bind(stream);
    stream.write = (frame) => {
      sides[name].push(Uint8Array.from(frame));
      return write(frame);
    };
  }
  await shaken([caller, callee]);
  return sides;
}

/** One side of the handshake with a peer that replays, and changes one of its frames. */
async function handshakeAgainst(frames, side) {
  const [near, far] = pipe();
  const changed = below(frames.length);
  for (const [at, frame] of frames.entries()) far.write(at === changed ? mutated(frame) : frame);
  far.finish();
  await side(near);
}

const sides = await recorded();
const entries = [
  { kind: 'directory', path: 'Photos', size: 0, modified: 0 },
  { kind: 'file', path: 'Photos/ü.jpg', size: 9, modified: 1_700_000_000_000 },
  { kind: 'text', path: 'Text', size: 5, modified: 0 },
];
const [manifest] = manifestRecords(entries);
const announcement = encodeAnnouncement({ kind: 'here', ...bob.party, port: 45457 });
const control = jsonBytes({ upTo: 3, failed: [[1, 'changed-file']] });

const frameOf = (size) => joined(new Uint8Array([0, 0, 0, size]), new Uint8Array(size));

const TARGETS = {
  announcement: async () => decodeAnnouncement(mutated(announcement)),
  manifest: async () => {
    const reader = new ManifestReader();
    reader.add(mutated(manifest));
    reader.finish();
  },
  control: async () => contentOf(mutated(control)),
  frames: async () => {
    let left = mutated(joined(...[9, 1, 200].map(frameOf)));
    const read = async (minimum, maximum = minimum) => {
      // As the engine's: at least the minimum, fewer only at the end.
      const bytes = left.subarray(0, minimum + below(maximum - minimum + 1));
      left = left.subarray(bytes.length);
      return bytes;
    };
    const stream = new FrameStream({ read });
    while (await stream.read());
  },
  callee: () => handshakeAgainst(sides.caller, (stream) => answers(stream)),
  caller: () => handshakeAgainst(sides.callee, (stream) => calls(stream, anna)),
};
/** Handshakes take a hundred times as long, so only some of the cases are handshakes. */
const SHARES = {
  announcement: 20,
  manifest: 35,
  control: 26,
  frames: 15,
  callee: 2,
  caller: 2,
};

const outcomes = {};
let faults = 0;
let slowest = 0;
const began = performance.now();
for (const [name, share] of Object.entries(SHARES)) {
  for (let number = Math.round((count * share) / 100); number > 0; --number) {
    const started = performance.now();
    let outcome = 'understood';
    try {
      await TARGETS[name]();
    } catch (error) {
      outcome = error instanceof TransferError ? error.code : 'FAULT';
      if (outcome === 'FAULT') console.error(name, error);
    }
    const took = performance.now() - started;
    slowest = Math.max(slowest, took);
    if (took > LONG) outcome = 'SLOW';
    if (outcome === 'FAULT' || outcome === 'SLOW') ++faults;
    const key = `${name}: ${outcome}`;
    outcomes[key] = (outcomes[key] ?? 0) + 1;
  }
}
console.table(outcomes);
const seconds = ((performance.now() - began) / 1000).toFixed(1);
console.log(
  `${count} cases, seed ${seed}, ${seconds} s, slowest ${slowest.toFixed(1)} ms, ${faults} faults`,
);
process.exitCode = faults > 0 ? 1 : 0;
