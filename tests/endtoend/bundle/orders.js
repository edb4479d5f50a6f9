// Orders of a test, one after another: each line that it writes into the file `orders` is one in JSON;
// what came of it goes into the file `done-` with its number. "end" is the last.

import { EngineFile, stat } from './engine/files.js';

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

/**
 * @param {string} folder
 * @param {(order: any) => unknown} follow
 */
export async function followOrders(folder, follow) {
  for (let done = 0; ;) {
    const lines = (await readText(`${folder}/orders`)).split('\n').slice(0, -1);
    for (; done < lines.length; ++done) {
      const order = JSON.parse(lines[done]);
      if (order === 'end') return;
      await writeText(`${folder}/done-${done}`, JSON.stringify(await follow(order)));
    }
    await new Promise((resolve) => setTimeout(resolve, 50));
  }
}
