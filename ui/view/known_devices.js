// The devices whose keys are kept, near or not: since when, when last seen, what each may send without a
// question, and the way to forget it.

import { isolated } from '../text/foreign_text.js';
import { dayText, sizeText, whenText } from '../text/format.js';
import { words } from '../text/words.js';
import { button } from './controls.js';
import { element, keepingFocus, setAttribute, setShown, setText, uniqueId } from './dom.js';
import { KeyedList } from './keyed_list.js';

/** @typedef {import('../model/types.js').KnownDevice} KnownDevice */

/** Sizes up to which offers may come in without a question, in bytes. */
const SIZES = [1e7, 1e8, 1e9, 1e10, 1e11];

/** @param {KnownDevice} device */
function factsOf({ since, seen, isNear }) {
  const facts = [];
  if (since > 0) facts.push(words('known.since', { date: dayText(since) }));
  if (isNear) facts.push(words('known.near'));
  else if (seen > 0) facts.push(words('known.seen', { date: whenText(seen, Date.now()) }));
  return facts.join(' · ');
}

/**
 * @param {{ forget: () => void, acceptUpTo: (bytes: number) => void }} actions
 * @returns {import('./keyed_list.js').Row<KnownDevice>}
 */
function knownDeviceRow({ forget, acceptUpTo }) {
  const title = element('span', { class: 'title', dir: 'auto' });
  const facts = element('span', { class: 'faint' });
  const fingerprint = element('code', { class: 'fingerprint faint' });
  const forgetting = button(words('known.forget'), forget, { 'data-takes-focus': true });
  const id = uniqueId();
  const most = element(
    'select',
    { id, on: { change: () => acceptUpTo(Number(most.value)) } },
    element('option', { value: 0 }, words('known.never')),
    ...SIZES.map((size) =>
      element('option', { value: size }, words('known.upTo', { size: sizeText(size) })),
    ),
  );
  return {
    element: element(
      'li',
      { class: 'known-device', tabindex: -1 },
      element('div', { class: 'words' }, title, facts, fingerprint),
      element(
        'div',
        { class: 'known-device-choices' },
        element('label', { for: id, class: 'faint' }, words('known.accept')),
        most,
        forgetting,
      ),
    ),
    update(device) {
      const name = isolated(device.name);
      setText(title, device.name);
      setText(facts, factsOf(device));
      setText(fingerprint, device.fingerprint);
      setAttribute(most, 'aria-label', words('known.acceptNamed', { device: name }));
      const fitting = SIZES.filter((size) => size <= device.acceptsUpTo);
      most.value = String(fitting[fitting.length - 1] ?? 0);
      setAttribute(forgetting, 'aria-label', words('known.forgetNamed', { device: name }));
    },
  };
}

/**
 * @param {import('../model/application.js').Application} application
 * @param {(action: () => unknown) => Promise<boolean>} attempt
 */
export function knownDevicesPart(application, attempt) {
  const rows = element('ul', { role: 'list', 'aria-label': words('known.title') });
  const nothing = element('p', { class: 'faint' }, words('known.none'));
  /** @type {KeyedList<KnownDevice>} */
  const list = new KeyedList(
    rows,
    ({ key }) => key,
    (device) =>
      knownDeviceRow({
        forget: () => attempt(() => application.known.forget(device.key)),
        acceptUpTo: (bytes) => attempt(() => application.known.acceptUpTo(device.key, bytes)),
      }),
  );
  const part = element(
    'div',
    { class: 'known-devices', tabindex: -1 },
    element('h3', {}, words('known.title')),
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
