// Shows one state of the window after another, as the test orders, and answers what there is to see:
// {show: NAME} is a state of sample_state.js, afresh; {} only looks.

import { STATES } from './sample_state.js';
import { followOrders } from './orders.js';
import { mount, nameOf, settled, useStyle } from './harness.js';

async function picture() {
  const canvas = document.createElement('canvas');
  canvas.getContext('2d').fillRect(0, 0, 64, 64);
  const blob = await new Promise((resolve) => canvas.toBlob(resolve));
  return new Uint8Array(await blob.arrayBuffer());
}

/** What sticks out of the window to the right. */
const sticksOut = () =>
  [...document.body.querySelectorAll('*')]
    .filter(
      (element) =>
        element.checkVisibility() &&
        !element.closest('.unseen') &&
        element.getBoundingClientRect().right > innerWidth + 0.5,
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
  await followOrders(folder, async ({ show }) => {
    if (show) application = mount({ ...STATES[show], picture: bytes });
    await settled();
    return {
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
