// Shows one state of the window after another, as the test orders, and answers what there is to see:
// {show: NAME} is a state of sample_state.js, afresh, in a `language` and with a dialog of the menu `open`
// where those are given; {axe: true} has axe-core look at it; {} only looks.

import { MANY, STATES } from './sample_state.js';
import { followOrders } from './orders.js';
import { mount, nameOf, open, settled, useStyle } from './harness.js';
import { MIRRORED } from './mirrored.js';
import { de } from './text/catalogue/de.js';
import { en } from './text/catalogue/en.js';
import { speak, words } from './text/words.js';

async function picture() {
  const canvas = document.createElement('canvas');
  canvas.getContext('2d').fillRect(0, 0, 64, 64);
  const blob = await new Promise((resolve) => canvas.toBlob(resolve));
  return new Uint8Array(await blob.arrayBuffer());
}

const CATALOGUES = { en, de, ar: MIRRORED };

/** What axe-core objects to. */
async function faults() {
  await import('./axe.min.js');
  const { violations } = await globalThis.axe.run({ preload: false });
  return violations.flatMap(({ id, nodes }) => nodes.map(({ html }) => `${id}: ${html}`));
}

/** What sticks out of the window at either side. */
const sticksOut = () =>
  [...document.body.querySelectorAll('*')]
    .filter(
      (element) =>
        element.checkVisibility() &&
        !element.closest('.unseen') &&
        (element.getBoundingClientRect().right > innerWidth + 0.5 ||
          element.getBoundingClientRect().left < -0.5),
    )
    .map((element) => `${element.tagName}.${element.className}: ${nameOf(element).slice(0, 40)}`);

export async function scenario({ folder }) {
  await useStyle();
  const bytes = await picture();
  const refusals = [];
  document.addEventListener('securitypolicyviolation', (event) =>
    refusals.push(event.violatedDirective),
  );
  let application = mount();
  await followOrders(folder, async ({ show, language = 'en', open: entry, axe }) => {
    if (show) {
      speak({ languages: [language], time: language, numbers: language }, CATALOGUES);
      application = mount({ ...(show === 'many' ? MANY : STATES[show]), picture: bytes });
      if (entry) open(words(entry));
    }
    await settled();
    return {
      faults: axe ? await faults().catch((error) => [String(error)]) : null,
      focus: document.activeElement ? nameOf(document.activeElement).slice(0, 80) : null,
      width: innerWidth,
      scrolls: document.scrollingElement.scrollWidth > innerWidth,
      sticksOut: sticksOut(),
      isDark: matchMedia('(prefers-color-scheme: dark)').matches,
      calls: application.calls,
      dialogs: document.querySelectorAll('dialog[open]').length,
      pictures: [...document.images].filter((image) => image.naturalWidth > 0).length,
      refusals,
    };
  });
}
