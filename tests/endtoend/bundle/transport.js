// What the link to the host promises: order, any number of calls in flight, payloads unharmed, the
// page kept to its bundle, errors in words.

import { MethodChannel } from './engine/method_channel.js';
import { EngineFile, remove, stat } from './engine/files.js';
import { call, outcome } from './outcome.js';

const MIB = 1 << 20;

async function thousandInFlight() {
  const answered = [];
  await Promise.all(Array.from({ length: 1000 }, async (_, index) => {
    const { value } = await call('locateReceivedFiles', { names: [`${index}`] });
    answered.push([index, value.length]);
  }));
  return {
    count: answered.length,
    inOrder: answered.every(([index], position) => index === position),
  };
}

/** 64 MiB through a file: written in one call, read back in pieces, compared byte by byte. */
async function largePayload(folder) {
  const payload = new Uint8Array(64 * MIB);
  for (let index = 0; index < payload.length; ++index) payload[index] = (index * 2654435761) >>> 24;
  const file = await EngineFile.create(`${folder}/large`);
  await file.write(0, payload);
  await file.flush();
  await file.close();
  const again = await EngineFile.open(`${folder}/large`);
  let equal = true;
  for (let offset = 0; offset < payload.length; offset += 16 * MIB) {
    const piece = await again.read(offset, 64 * MIB);  // cut to what one call gives
    equal &&= piece.length === 16 * MIB
      && piece.every((byte, index) => byte === payload[offset + index]);
  }
  const end = await again.read(payload.length, 10);
  await again.close();
  await remove(`${folder}/large`);
  return { equal, atEnd: end.length, left: await stat(`${folder}/large`) };
}

async function fileErrors(folder) {
  const file = await EngineFile.create(`${folder}/mine`);
  const results = {
    taken: await outcome(EngineFile.create(`${folder}/mine`)),
    missing: await outcome(EngineFile.open(`${folder}/none`)),
    folder: await outcome(EngineFile.open(folder)),
    device: await outcome(EngineFile.open('/dev/zero')),
    relative: await outcome(stat('mine')),
    readWriter: await outcome(file.read(0, 1)),
    nothing: await outcome(stat(`${folder}/none`)),
    stat: (await stat(folder)).kind,
  };
  await file.close();
  results.closed = await outcome(file.write(0, new Uint8Array(1)));
  const reader = await EngineFile.open(`${folder}/mine`);
  results.writeReader = await outcome(reader.write(0, new Uint8Array(1)));
  return results;
}

/** Everything that would reach outside the bundle. */
async function escapes() {
  const blocked = [];
  document.addEventListener('securitypolicyviolation', (event) => {
    blocked.push(event.effectiveDirective);
  });
  const fails = async (action) => {
    try {
      await action();
      return false;
    } catch {
      return true;
    }
  };
  const results = {
    fetchBundle: await fails(() => fetch('index.html')),
    fetchOutside: await fails(() => fetch('https://example.org/')),
    fetchFile: await fails(() => fetch('file:///etc/passwd')),
    import: await fails(() => import('./../../../../etc/hostname')),
    window: window.open('https://example.org/') === null,
    evaluation: await fails(() => new Function('return 1')()),
    linkTaken: !('brevanholtEngineLink' in globalThis),
  };
  const frame = document.createElement('iframe');
  frame.src = 'index.html';
  document.body.append(frame);
  location.href = 'https://example.org/';
  const anchor = document.createElement('a');
  anchor.href = 'data:text/plain,x';
  anchor.download = 'x';
  document.body.append(anchor);
  anchor.click();
  await new Promise((resolve) => setTimeout(resolve, 500));
  results.stillHere = location.href;
  results.blocked = [...new Set(blocked)].sort();
  return results;
}

export async function scenario({ folder }) {
  return {
    inFlight: await thousandInFlight(),
    large: await largePayload(folder),
    files: await fileErrors(folder),
    noChannel: await outcome(new MethodChannel('nobody').invokeMethod('x')),
    escapes: await escapes(),
  };
}
