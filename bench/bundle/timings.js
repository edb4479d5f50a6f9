// Times calls to the host from the page's side, in milliseconds.

import { EngineFile } from './engine/files.js';
import { call } from './outcome.js';

const MIB = 1 << 20;

/** The page's clock ticks in milliseconds, so only the sum over many calls says something.
 * @param {number} count @param {() => Promise<unknown>} action */
async function eachOf(count, action) {
  const start = performance.now();
  for (let index = 0; index < count; ++index) await action();
  return (performance.now() - start) / count;
}

/** @param {number} count */
async function inFlight(count) {
  const start = performance.now();
  await Promise.all(Array.from({ length: count }, () => call('enableMulticast')));
  return (performance.now() - start) / count;
}

export async function scenario({ folder }) {
  await call('appVersion');
  const firstAnswer = Date.now();
  const bytes = new Uint8Array(MIB).fill(7);
  const file = await EngineFile.create(`${folder}/timings`);
  const results = {
    firstAnswer,
    oneCall: await eachOf(2000, () => call('enableMulticast')),
    inFlight: await inFlight(5000),
    writeMebibyte: await eachOf(200, () => file.write(0, bytes)),
  };
  await file.close();
  const reader = await EngineFile.open(`${folder}/timings`);
  results.readMebibyte = await eachOf(200, () => reader.read(0, MIB));
  await reader.close();
  const key = new Uint8Array(32).fill(1);
  const data = new Uint8Array(16 * MIB).fill(7);
  results.seal16Mebibytes = await eachOf(20, () => call('cryptoEncrypt', { key, data }));
  return results;
}
