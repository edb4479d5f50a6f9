// One device nearby.

import { button, iconButton } from './controls.js';
import { element, setAttribute, setShown, setText, uniqueId } from './dom.js';
import { isolated } from '../text/foreign_text.js';
import { icon } from './icons.js';

/** @typedef {import('../model/types.js').Device} Device */

const WORDS = {
  new: 'New device: compare a code first',
  trusted: 'Known device',
  unproven: 'Does not answer; may not be the known device',
  changed: 'Its key has changed',
};

/** The warning about a device whose key is not the known one. */
function changedKeyWarning() {
  return element(
    'p',
    {},
    'This device does not prove to be the one you know. It may have been set up ' +
      'anew, or another device uses its name. Nothing is sent to it or received from it. If you go ' +
      'on, both devices show a code to compare first.',
  );
}

/**
 * @param {{ send: () => void, choose: (isChosen: boolean) => void,
 *           agree: () => void, forget: () => void }} actions
 * @returns {import('./keyed_list.js').Row<{ device: Device, standing: import('./devices.js').Standing }>}
 */
export function deviceRow({ send, choose, agree, forget }) {
  const title = element('span', { class: 'title' });
  const words = element('span', { class: 'faint' });
  const choice = element('input', {
    type: 'checkbox',
    on: { change: () => choose(choice.checked) },
  });
  const sending = button('Send', send);

  const moreId = uniqueId();
  const fingerprint = element('code', { class: 'fingerprint' });
  const forgetting = button('Forget this device', forget);
  const details = element(
    'div',
    { id: moreId, class: 'device-details', hidden: true },
    element('span', { class: 'faint' }, 'Fingerprint'),
    fingerprint,
    forgetting,
  );
  const more = iconButton(
    'more',
    '',
    () => {
      details.hidden = !details.hidden;
      setAttribute(more, 'aria-expanded', String(!details.hidden));
    },
    { class: 'icon-button more-icon', 'aria-expanded': 'false', 'aria-controls': moreId },
  );

  const warning = element(
    'div',
    { class: 'warning', role: 'group' },
    changedKeyWarning(),
    element(
      'div',
      { class: 'actions' },
      button('Agree to the new key', agree),
      button('Forget this device', forget),
    ),
  );
  const line = element(
    'div',
    { class: 'row' },
    choice,
    icon('device'),
    element('div', { class: 'words' }, title, words),
    sending,
    more,
  );
  return {
    element: element('li', { class: 'device', tabindex: -1 }, line, warning, details),
    update({ device, standing }) {
      const { trust } = device;
      const name = isolated(device.name);
      setText(title, device.name);
      setAttribute(title, 'title', device.name);
      const mark = standing.sharesName ? ` · Fingerprint ${device.fingerprint}` : '';
      setText(words, (device.isAway ? 'No longer near' : WORDS[trust]) + mark);
      setAttribute(choice, 'aria-label', `Choose ${name}`);
      setShown(choice, standing.canChoose);
      choice.disabled = trust === 'changed';
      if (choice.checked !== standing.isChosen) choice.checked = standing.isChosen;
      setAttribute(sending, 'aria-label', `Send to ${name}`);
      sending.disabled = !standing.canSend;
      setShown(sending, trust !== 'changed');
      setAttribute(more, 'aria-label', `Details of ${name}`);
      setAttribute(more, 'title', 'Details');
      setText(fingerprint, device.fingerprint);
      setShown(forgetting, trust === 'trusted' || trust === 'unproven');
      setShown(warning, trust === 'changed');
      setAttribute(warning, 'aria-label', `The key of ${name} has changed`);
    },
  };
}
