// A page that the test controls through files in `folder`: it makes the calls that it finds in
// call-1, call-2, ... and leaves their outcomes in reply-1, reply-2, ...; what the host sends goes
// into `events`, a JSON line each, and the last of it is shown.

import { EngineFile, stat } from './engine/files.js';
import { outcome, platform } from './outcome.js';

const encode = (value) => new TextEncoder().encode(`${JSON.stringify(value)}\n`);
const pause = (milliseconds) => new Promise((resolve) => setTimeout(resolve, milliseconds));

async function readJson(path) {
  const file = await EngineFile.open(path);
  const text = new TextDecoder().decode(await file.read(0, 1 << 20));
  await file.close();
  return JSON.parse(text);
}

async function recordEvents(path) {
  const file = await EngineFile.create(path);
  let offset = 0;
  platform.setMethodCallHandler((method, args) => {
    document.body.textContent = `${method} ${JSON.stringify(args)}`.slice(0, 500);
    const line = encode([method, args]);
    file.write(offset, line);
    offset += line.length;
  });
}

async function obey(folder) {
  for (let number = 1; ; ++number) {
    while (!(await stat(`${folder}/call-${number}`))) await pause(20);
    const { method, args } = await readJson(`${folder}/call-${number}`);
    outcome(platform.invokeMethod(method, args)).then(async (result) => {
      const reply = await EngineFile.create(`${folder}/reply-${number}`);
      await reply.write(0, encode(result));
      await reply.close();
    });
  }
}

export async function scenario({ folder }) {
  await recordEvents(`${folder}/events`);
  obey(folder);
}
