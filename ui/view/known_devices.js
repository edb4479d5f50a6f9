// The devices whose keys are kept, near or not, each with the way to forget it.

import { isolated } from '../text/foreign_text.js';
import { button } from './controls.js';
import { element, keepingFocus, setAttribute, setShown, setText } from './dom.js';
import { KeyedList } from './keyed_list.js';

/** @typedef {import('../model/types.js').KnownDevice} KnownDevice */

/**
 * @param {KnownDevice} device
 * @param {(key: string) => void} forget
 * @returns {import('./keyed_list.js').Row<KnownDevice>}
 */
function knownDeviceRow({ key }, forget) {
  const title = element('span', { class: 'title' });
  const fingerprint = element('code', { class: 'fingerprint faint' });
  const forgetting = button('Forget', () => forget(key), { 'data-takes-focus': true });
  return {
    element: element(
      'li',
      { class: 'known-device', tabindex: -1 },
      element('div', { class: 'words' }, title, fingerprint),
      forgetting,
    ),
    update(device) {
      setText(title, device.name);
      setText(fingerprint, device.fingerprint);
      setAttribute(forgetting, 'aria-label', `Forget ${isolated(device.name)}`);
    },
  };
}

/**
 * @param {import('../model/application.js').Application} application
 * @param {(action: () => unknown) => Promise<boolean>} attempt
 */
export function knownDevicesPart(application, attempt) {
  const rows = element('ul', { role: 'list', 'aria-label': 'Known devices' });
  const nothing = element('p', { class: 'faint' }, 'None yet: compare a code to know a device.');
  /** @type {KeyedList<KnownDevice>} */
  const list = new KeyedList(
    rows,
    ({ key }) => key,
    (device) => knownDeviceRow(device, (key) => attempt(() => application.forgetDevice(key))),
  );
  const part = element(
    'div',
    { class: 'known-devices', tabindex: -1 },
    element('h3', {}, 'Known devices'),
    nothing,
    rows,
  );
  const update = () =>
    keepingFocus(part, () => {
      list.update(application.knownDevices);
      setShown(rows, application.knownDevices.length > 0);
      setShown(nothing, application.knownDevices.length === 0);
    });
  application.addEventListener('knownDevices', update);
  update();
  return part;
}
