// Runs the scenario that the test chose and leaves a report: one JSON object with what the scenario
// returned, or with its error.

import { uiArguments } from './engine/application.js';
import { EngineFile } from './engine/files.js';

/** @param {unknown} value */
function plain(value) {
  return JSON.stringify(value, (_key, part) => {
    if (part instanceof Uint8Array) return { bytes: part.length, first: [...part.slice(0, 4)] };
    if (typeof part === 'bigint') return { bigint: String(part) };
    return part;
  });
}

async function main() {
  const given = Object.fromEntries((await uiArguments()).map((text) => text.split(/=(.*)/s)));
  let report;
  try {
    const { scenario } = await import(`./${given.scenario}.js`);
    report = { value: await scenario(given) };
  } catch (error) {
    report = { error: `${error.name}: ${error.message}`, stack: error.stack };
  }
  const file = await EngineFile.create(given.report);
  await file.write(0, new TextEncoder().encode(plain(report)));
  await file.close();
}

main();
