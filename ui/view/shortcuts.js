// The keys of the window, and the dialog that lists them.

import { words } from '../text/words.js';
import { dialog } from './dialog.js';
import { element } from './dom.js';

/** @param {...string} names with Ctrl */
const control =
  (...names) =>
  (/** @type {KeyboardEvent} */ event) =>
    event.ctrlKey && !event.altKey && !event.metaKey && names.includes(event.key.toLowerCase());

/** How a key with Ctrl held is shown. @param {string} key */
export const withCtrl = (key) => `${words('key.ctrl')}+${key}`;

/** How keys that several places name are shown. */
export const keysText = () => ({
  addFiles: withCtrl('O'),
  paste: withCtrl('V'),
  settings: withCtrl(words('key.comma')),
  help: 'F1',
  shortcuts: withCtrl('?'),
  larger: withCtrl(words('key.plus')),
  smaller: withCtrl(words('key.minus')),
  normal: withCtrl('0'),
  close: withCtrl('W'),
  quit: withCtrl('Q'),
});

/** @typedef {Record<keyof ReturnType<typeof keysText>, () => void>} Deeds */

/** @type {Record<keyof Deeds, (event: KeyboardEvent) => boolean>} */
const MATCHES = {
  addFiles: control('o'),
  paste: control('v'),
  settings: control(','),
  help: (event) => event.key === 'F1',
  shortcuts: control('?'),
  larger: control('+', '='),
  smaller: control('-'),
  normal: control('0'),
  close: control('w'),
  quit: control('q'),
};

/** Keys that a text field has a use for. */
const OF_FIELDS = ['paste'];
/** Keys that work while a dialog is open. */
const ANYWHERE = ['larger', 'smaller', 'normal', 'close', 'quit'];

/** @param {EventTarget | null} target */
const isField = (target) =>
  target instanceof HTMLTextAreaElement ||
  (target instanceof HTMLInputElement && target.type === 'text');

/**
 * Listens for the keys.
 * @param {Deeds} deeds
 * @returns {() => void} stops
 */
export function listenToKeys(deeds) {
  const heard = (/** @type {KeyboardEvent} */ event) => {
    const name = /** @type {(keyof Deeds)[]} */ (Object.keys(MATCHES)).find((one) =>
      MATCHES[one](event),
    );
    if (!name || event.defaultPrevented) return;
    if (OF_FIELDS.includes(name) && isField(event.target)) return;
    const isInDialog = document.querySelector('dialog[open]') !== null;
    if (isInDialog && !ANYWHERE.includes(name)) return;
    event.preventDefault();
    deeds[name]();
  };
  addEventListener('keydown', heard);
  return () => removeEventListener('keydown', heard);
}

/** The dialog that lists the keys. */
export function shortcutsDialog() {
  const rows = Object.entries(keysText()).flatMap(([name, keys]) => [
    element('dt', {}, words(/** @type {import('../text/words.js').Key} */ (`shortcuts.${name}`))),
    element('dd', {}, ...keysOf(keys)),
  ]);
  return dialog(
    'shortcuts-dialog',
    words('shortcuts.title'),
    element('dl', { class: 'shortcuts' }, ...rows),
  );
}

/** @param {string} keys such as “Ctrl+O” */
const keysOf = (keys) =>
  keys.split('+').flatMap((key, at) => [...(at > 0 ? ['+'] : []), element('kbd', {}, key)]);
