// How long the page takes for a frame while transfers go on beside a long list: from the update to the
// end of the drawing that it causes, which is when a message that was posted before it arrives.

import { mount, settled, useStyle } from './mounted.js';
import { ACTIVE, MANY } from './sample_state.js';

const UPDATES = 100;
const INTERVAL = 100;

export async function scenario({ rows }) {
  await useStyle();
  const { transfers, ...given } = MANY;
  const over = transfers.slice(1, 1 + Number(rows));
  const application = mount({ ...given, transfers: [...ACTIVE, ...over] });
  await settled();
  const times = [];
  for (let update = 1; update <= UPDATES; ++update) {
    await new Promise((resolve) => setTimeout(resolve, INTERVAL));
    times.push(
      await new Promise((resolve) => {
        requestAnimationFrame(() => {
          const began = performance.now();
          const active = ACTIVE.map((one) => ({ ...one, bytesDone: update * 200_000 }));
          application.change({ transfers: [...active, ...over] });
          const { port1, port2 } = new MessageChannel();
          port1.onmessage = () => resolve(performance.now() - began);
          port2.postMessage(null);
        });
      }),
    );
  }
  times.sort((left, right) => left - right);
  return { median: times[UPDATES / 2], late: times[Math.floor(UPDATES * 0.95)] };
}
