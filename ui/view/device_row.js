// One device nearby.

import { button, iconButton } from './controls.js';
import { element, setAttribute, setShown, setText, uniqueId } from './dom.js';
import { isolated } from '../text/foreign_text.js';
import { words } from '../text/words.js';
import { icon } from './icons.js';

/** @typedef {import('../model/types.js').Device} Device */

/** Characters of the fingerprint that distinguish two devices of one name. */
const MARK = 9;

/** @type {Record<Device['trust'], import('../text/words.js').Key>} */
const WORDS = {
  new: 'device.new',
  trusted: 'device.trusted',
  unproven: 'device.unproven',
  changed: 'device.changed',
};

/**
 * @param {{ send: () => void, choose: (isChosen: boolean) => void,
 *           agree: () => void, forget: () => void }} actions
 * @returns {import('./keyed_list.js').Row<{ device: Device, standing: import('./devices.js').Standing }>}
 */
export function deviceRow({ send, choose, agree, forget }) {
  const title = element('span', { class: 'title', dir: 'auto' });
  const status = element('span', { class: 'faint' });
  const choice = element('input', {
    type: 'checkbox',
    on: { change: () => choose(choice.checked) },
  });
  const sending = button(words('device.send'), send);

  const moreId = uniqueId();
  const fingerprint = element('code', { class: 'fingerprint' });
  const forgetting = button(words('device.forget'), forget);
  const details = element(
    'div',
    { id: moreId, class: 'device-details', hidden: true },
    element('span', { class: 'faint' }, words('device.fingerprint')),
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
    element('p', {}, words('device.cannotVerify')),
    element(
      'div',
      { class: 'actions' },
      button(words('device.trustNewKey'), agree),
      button(words('device.forget'), forget),
    ),
  );
  const line = element(
    'div',
    { class: 'row' },
    choice,
    icon('device'),
    element('div', { class: 'words' }, title, status),
    sending,
    more,
  );
  const target = element('li', { class: 'device', tabindex: -1 }, line, warning, details);
  return {
    element: target,
    update({ device, standing }) {
      const { trust } = device;
      const { fingerprint: mark } = device;
      const plain = isolated(device.name);
      // Screen readers tell two devices of one name apart as well.
      const name = standing.sharesName
        ? words('device.named', { name: plain, mark: mark.slice(0, MARK) })
        : plain;
      setAttribute(target, 'data-device', trust === 'changed' || device.isAway ? null : device.id);
      setText(title, device.name);
      setAttribute(title, 'title', device.name);
      const facts = words(device.isAway ? 'device.away' : WORDS[trust]);
      setText(
        status,
        standing.sharesName ? words('device.marked', { words: facts, fingerprint: mark }) : facts,
      );
      setAttribute(choice, 'aria-label', words('device.choose', { device: name }));
      setShown(choice, standing.canChoose);
      choice.disabled = trust === 'changed';
      if (choice.checked !== standing.isChosen) choice.checked = standing.isChosen;
      setAttribute(sending, 'aria-label', words('device.sendTo', { device: name }));
      sending.disabled = !standing.canSend;
      setShown(sending, trust !== 'changed');
      setAttribute(more, 'aria-label', words('device.detailsOf', { device: name }));
      setAttribute(more, 'title', words('device.details'));
      setText(fingerprint, device.fingerprint);
      setShown(forgetting, trust === 'trusted' || trust === 'unproven');
      setShown(warning, trust === 'changed');
      setAttribute(warning, 'aria-label', words('device.keyOf', { device: name }));
    },
  };
}
