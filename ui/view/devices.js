// The devices nearby. The outbox is sent to one of them, or to all that are chosen.

import { bringIn } from './click_guard.js';
import { button } from './controls.js';
import { deviceRow } from './device_row.js';
import { element, keepingFocus, region, setShown, setText } from './dom.js';
import { words } from '../text/words.js';
import { isolated } from '../text/foreign_text.js';
import { nothingYet } from './icons.js';
import { KeyedList } from './keyed_list.js';

/** @typedef {import('../model/application.js').Application} Application */
/** @typedef {import('../model/types.js').Device} Device */
/** @typedef {{ canSend: boolean, canChoose: boolean, isChosen: boolean, sharesName: boolean }} Standing */

/**
 * @param {Application} application
 * @param {import('./notices.js').Notices} notices
 */
export function devicesView(application, notices) {
  const { attempt } = notices;
  /** @type {Set<string>} */
  const chosen = new Set();
  const rows = element('ul', { class: 'rows', role: 'list', 'aria-label': words('devices.list') });
  const nothing = nothingYet('device');
  const sendToChosen = button('', () => send([...chosen]), { class: 'main' });
  const foot = element('div', { class: 'row-foot' }, sendToChosen);
  const hint = element('p', { class: 'hint faint' }, words('devices.addFirst'));

  /** @param {string[]} ids */
  const send = async (ids) => {
    if (await attempt(() => application.sending.send(ids))) chosen.clear();
    update();
  };
  /** @type {KeyedList<{ device: Device, standing: Standing }>} */
  const list = new KeyedList(
    rows,
    ({ device }) => device.id,
    ({ device: { id, key } }) =>
      deviceRow({
        send: () => send([id]),
        choose: (isChosen) => {
          chosen[isChosen ? 'add' : 'delete'](id);
          update();
        },
        agree: () => attempt(() => application.known.agreeToNewKey(id)),
        forget: () => attempt(() => application.known.forget(key)),
      }),
  );

  const section = region(
    'devices',
    words('devices.title'),
    element('div', { class: 'card' }, nothing.element, rows, foot),
    hint,
  );
  /** While the pointer is over the list, rows keep their places and new ones come last. */
  /** @type {Device[]} */
  let listed = [];
  const devicesInPlace = () => {
    if (!rows.matches(':hover')) return application.devices;
    const near = new Map(application.devices.map((device) => [device.id, device]));
    const places = listed.map((device) => near.get(device.id) ?? { ...device, isAway: true });
    const known = new Set(listed.map(({ id }) => id));
    return [...places, ...application.devices.filter(({ id }) => !known.has(id))];
  };
  rows.addEventListener('pointerleave', () => update());
  const update = () =>
    keepingFocus(section, () => {
      const { outbox, settings } = application;
      const devices = (listed = devicesInPlace());
      const able = devices.filter(({ trust, isAway }) => trust !== 'changed' && !isAway);
      for (const id of chosen) if (!able.some((device) => device.id === id)) chosen.delete(id);
      list.update(
        devices.map((device) => ({
          device,
          standing: {
            canSend: outbox.length > 0 && device.trust !== 'changed' && !device.isAway,
            canChoose: able.length > 1,
            isChosen: chosen.has(device.id),
            sharesName: devices.some(({ id, name }) => id !== device.id && name === device.name),
          },
        })),
      );
      setShown(rows, devices.length > 0);
      setShown(nothing.element, devices.length === 0);
      setText(
        nothing.words,
        settings.isVisible
          ? words('devices.none')
          : `${words('devices.none')} ${words('devices.hidden')}`,
      );
      setShown(foot, chosen.size > 0);
      sendToChosen.disabled = outbox.length === 0;
      const only = chosen.size === 1 ? devices.find(({ id }) => chosen.has(id)) : undefined;
      setText(
        sendToChosen,
        only
          ? words('device.sendTo', { device: isolated(only.name) })
          : words('devices.sendToSome', { count: chosen.size }),
      );
      setShown(hint, outbox.length === 0 && devices.length > 0);
    });
  const deviceAt = ({ x = -1, y = -1 } = {}) => {
    const under = /** @type {HTMLElement | null} */ (
      document.elementFromPoint(x, y)?.closest('[data-device]') ?? null
    );
    return under && section.contains(under) ? under : null;
  };
  application.dropping.deviceAt = (place) => deviceAt(place)?.dataset.device ?? null;
  application.addEventListener('drag', () => {
    const target = application.drag?.hasFiles ? deviceAt(application.drag) : null;
    for (const row of rows.children) row.classList.toggle('drop-here', row === target);
  });
  application.addEventListener('devices', () => bringIn(section, update));
  for (const event of ['outbox', 'settings']) application.addEventListener(event, update);
  bringIn(section, update);
  return section;
}
