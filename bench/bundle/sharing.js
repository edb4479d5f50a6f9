// The longest that a call waits, in milliseconds, while something large is shared.

import { EngineFile } from './engine/files.js';
import { call, platform } from './outcome.js';

export async function scenario({ folder }) {
  let isShared = false;
  platform.setMethodCallHandler((method) => {
    isShared ||= method === 'sharedEntries';
  });
  await call('platformEventsReady');
  await (await EngineFile.create(`${folder}/ready`)).close();
  let longest = 0;
  while (!isShared) {
    const start = performance.now();
    await call('enableMulticast');
    longest = Math.max(longest, performance.now() - start);
  }
  return longest;
}
