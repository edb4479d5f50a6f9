// Runs the scenario that the test chose and leaves a report: one JSON object with what the scenario
// returned, or with its error.

import { uiArguments } from './engine/application.js';
import { EngineFile } from './engine/files.js';

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
  await file.write(0, new TextEncoder().encode(JSON.stringify(report)));
  await file.close();
}

main();
