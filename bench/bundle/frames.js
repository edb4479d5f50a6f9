// How long frames take while transfers go on beside a long list, and on a page with a progress bar and
// nothing else: from the update to the end of the drawing that it causes, which is when a message that was
// posted before it arrives. Both take turns, so that whatever else the machine does slows both.

import { mount, settled, useStyle } from './mounted.js';
import { ACTIVE, MANY } from './sample_state.js';

const TURNS = 5;
const UPDATES = 20;
const INTERVAL = 100;
/** For the first drawing of what has just been put there. */
const PAUSE = 500;

const pause = (time) => new Promise((resolve) => setTimeout(resolve, time));

/** @param {() => void} update */
const frameTime = (update) =>
  new Promise((resolve) => {
    requestAnimationFrame(() => {
      const began = performance.now();
      update();
      const { port1, port2 } = new MessageChannel();
      port1.onmessage = () => resolve(performance.now() - began);
      port2.postMessage(null);
    });
  });

const statistics = (times) => {
  times.sort((left, right) => left - right);
  return {
    median: times[Math.floor(times.length / 2)],
    late: times[Math.floor(times.length * 0.95)],
  };
};

export async function scenario({ rows }) {
  await useStyle();
  const { transfers, ...given } = MANY;
  const over = transfers.slice(1, 1 + Number(rows));
  const application = mount({ ...given, transfers: [...ACTIVE, ...over] });
  await settled();
  const bar = document.createElement('progress');
  const pages = {
    empty: {
      content: [bar],
      times: [],
      update: (share) => {
        bar.value = share;
      },
    },
    window: {
      content: [...document.body.childNodes],
      times: [],
      update(share) {
        const active = ACTIVE.map((one) => ({ ...one, bytesDone: share * one.bytesTotal }));
        application.change({ transfers: [...active, ...over] });
      },
    },
  };
  for (let turn = 0; turn < TURNS; ++turn) {
    for (const { content, times, update } of Object.values(pages)) {
      document.body.replaceChildren(...content);
      await pause(PAUSE);
      for (let step = 1; step <= UPDATES; ++step) {
        await pause(INTERVAL);
        times.push(await frameTime(() => update((turn * UPDATES + step) / (TURNS * UPDATES))));
      }
    }
  }
  return Object.fromEntries(
    Object.entries(pages).map(([name, { times }]) => [name, statistics(times)]),
  );
}
