// Does what the test asks for, line by line, as it writes lines of JSON into the file `orders`: one
// state of the shell, or a list of them, for "updateDesktopShell", or any other call as
// {method, arguments}. Counts the requests to look for devices anew.

import { EngineFile, stat } from './engine/files.js';
import { call, platform } from './outcome.js';

/** @param {string} path */
async function readText(path) {
  if (!(await stat(path))) return '';
  const file = await EngineFile.open(path);
  const text = new TextDecoder().decode(await file.read(0, 1 << 20));
  await file.close();
  return text;
}

/** @param {string} path @param {string} text */
async function writeText(path, text) {
  const file = await EngineFile.create(path);
  await file.write(0, new TextEncoder().encode(text));
  await file.close();
}

/** What the host replied. */
async function carryOut(order) {
  if (order.method) return call(order.method, order.arguments);
  for (const state of [].concat(order)) await platform.invokeMethod('updateDesktopShell', state);
  return undefined;
}

export async function scenario({ folder }) {
  let requests = 0;
  platform.setMethodCallHandler((method) => {
    if (method === 'discoveryRecoveryRequested') requests += 1;
  });
  let done = 0;
  for (;;) {
    const lines = (await readText(`${folder}/orders`)).split('\n').slice(0, -1);
    for (; done < lines.length; ++done) {
      const order = JSON.parse(lines[done]);
      if (order === 'end') return { requests };
      const outcome = await carryOut(order);
      await writeText(`${folder}/done-${done}`, JSON.stringify({ requests, outcome }));
    }
    await new Promise((resolve) => setTimeout(resolve, 50));
  }
}
