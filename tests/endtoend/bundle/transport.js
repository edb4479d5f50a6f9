// What the link to the host promises: order, any number of calls in flight, payloads unharmed, the
// page kept to its bundle.

import { EngineFile } from './engine/files.js';
import { call } from './outcome.js';

const MIB = 1 << 20;

async function thousandInFlight() {
  const answered = [];
  await Promise.all(
    Array.from({ length: 1000 }, (_, index) =>
      call('locateReceivedFiles', { names: [`${index}`] }).then(() => answered.push(index)),
    ),
  );
  return answered;
}

/** 64 MiB through a file: written in one call, read back in pieces, compared byte by byte. */
async function largePayload(folder) {
  const payload = new Uint8Array(64 * MIB);
  for (let index = 0; index < payload.length; ++index) payload[index] = (index * 2654435761) >>> 24;
  const file = await EngineFile.create(`${folder}/large`);
  await file.write(0, payload);
  await file.close();
  const again = await EngineFile.open(`${folder}/large`);
  let equal = 0;
  for (let piece; equal < payload.length; equal += piece.length) {
    piece = await again.read(equal, 64 * MIB); // cut to what one call gives
    if (!piece.length || !piece.every((byte, index) => byte === payload[equal + index])) break;
  }
  await again.close();
  return equal;
}

/** Tries each way out of the bundle: which work, and which of the page's rules refused the others. */
async function escapes() {
  const blocked = [];
  document.addEventListener('securitypolicyviolation', (event) => {
    blocked.push(event.effectiveDirective);
  });
  const works = (action) =>
    (async () => action())().then(
      () => true,
      () => false,
    );
  const worked = [];
  for (const action of [
    () => fetch('index.html'),
    () => fetch('https://example.org/'),
    () => fetch('file:///etc/passwd'),
    () => import('./../../../../etc/hostname'),
    () => new Function('return 1')(),
    () => window.open('https://example.org/').name,
    () => globalThis.brevanholtEngineLink.postMessage,
  ])
    if (await works(action)) worked.push(String(action));
  const frame = document.createElement('iframe');
  frame.src = 'index.html';
  document.body.append(frame);
  location.href = 'https://example.org/';
  await new Promise((resolve) => setTimeout(resolve, 500));
  return { worked, blocked, location: location.href };
}

export async function scenario({ folder }) {
  return {
    inFlight: await thousandInFlight(),
    large: await largePayload(folder),
    escapes: await escapes(),
  };
}
