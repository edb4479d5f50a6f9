// Orders of a test, one after another: each line that it writes into the file `orders` is one in JSON;
// what came of it goes into the file `done-` with its number. A page that was loaded again goes on.

import { EngineFile, replace, stat } from './engine/files.js';

/** @param {string} path */
async function readText(path) {
  if (!(await stat(path))) return '';
  const file = await EngineFile.open(path);
  const text = new TextDecoder().decode(await file.read(0, 1 << 20));
  await file.close();
  return text;
}

/**
 * @param {string} folder
 * @param {(order: any) => unknown} follow
 */
export async function followOrders(folder, follow) {
  let done = 0;
  while (await stat(`${folder}/done-${done}`)) ++done;
  for (;;) {
    const lines = (await readText(`${folder}/orders`)).split('\n').slice(0, -1);
    for (; done < lines.length; ++done) {
      const outcome = await follow(JSON.parse(lines[done]));
      await replace(`${folder}/done-${done}`, new TextEncoder().encode(JSON.stringify(outcome)));
    }
    await new Promise((resolve) => setTimeout(resolve, 50));
  }
}
