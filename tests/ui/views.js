// Shows one state of the window after another, as the test orders, and answers what there is to see:
//   {show: NAME}      a state of fake_application.js, afresh
//   {press: NAME}     clicks what is called so
//   {change: STATE}   replaces state of the application
//   {type: [NAME, TEXT]}  types into a field
//   {event: [NAME, VALUE]}  an event of the host
//   {look: true}      only looks

import { STATES } from './sample_state.js';
import { followOrders } from './orders.js';
import { control, mount, nameOf, settled, useStyle } from './page.js';

async function picture() {
  const canvas = document.createElement('canvas');
  canvas.width = canvas.height = 64;
  const context = canvas.getContext('2d');
  const gradient = context.createLinearGradient(0, 0, 0, 64);
  gradient.addColorStop(0, '#503a9c');
  gradient.addColorStop(0.6, '#f0883e');
  gradient.addColorStop(1, '#2b2140');
  context.fillStyle = gradient;
  context.fillRect(0, 0, 64, 64);
  const blob = await new Promise((resolve) => canvas.toBlob(resolve));
  return new Uint8Array(await blob.arrayBuffer());
}

/** What sticks out of the window to the right. */
function sticksOut() {
  return [...document.body.querySelectorAll('*')]
    .filter(
      (element) =>
        element.checkVisibility() &&
        !element.closest('.unseen') &&
        element.getBoundingClientRect().right > innerWidth + 0.5,
    )
    .map((element) => `${element.tagName}.${element.className}: ${nameOf(element).slice(0, 40)}`);
}

export async function scenario({ folder }) {
  await useStyle();
  const bytes = await picture();
  const refusals = [];
  document.addEventListener('securitypolicyviolation', (event) =>
    refusals.push(event.violatedDirective),
  );
  let page = mount();
  await followOrders(folder, async ({ show, press, change, type, event }) => {
    if (show) page = mount({ ...STATES[show], picture: bytes });
    if (change) page.application.change(change);
    if (type) {
      const field = control(type[0]);
      field.value = type[1];
      field.dispatchEvent(new Event('input'));
    }
    if (event) page.sendEvent(...event);
    if (press) control(press).click();
    await settled();
    return {
      focus: document.activeElement ? nameOf(document.activeElement).slice(0, 80) : null,
      width: innerWidth,
      scrolls: document.scrollingElement.scrollWidth > innerWidth,
      sticksOut: sticksOut(),
      isDark: matchMedia('(prefers-color-scheme: dark)').matches,
      calls: page.application.calls,
      dialogs: document.querySelectorAll('dialog[open]').length,
      pictures: [...document.images].filter((image) => image.naturalWidth > 0).length,
      refusals,
    };
  });
}
