// The least that shows that the channel is there.

import { call } from './outcome.js';

export async function scenario() {
  return { version: await call('appVersion'), unknown: await call('unknown') };
}
