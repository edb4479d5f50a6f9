// The settings that need more than a switch.

import { isolated } from '../text/foreign_text.js';
import { words } from '../text/words.js';
import { button } from './controls.js';
import { element, setAttribute, setShown, setText, showText, uniqueId } from './dom.js';

/** @typedef {import('../model/application.js').Application} Application */
/** @typedef {import('../model/types.js').Settings} Settings */
/** @typedef {{ element: HTMLElement, update: (settings: Settings) => void }} Part */

/** @type {Record<Settings['notifications'], import('../text/words.js').Key>} */
const NOTIFICATIONS = {
  unknown: 'settings.notificationsUnknown',
  granted: 'settings.notificationsGranted',
  denied: 'settings.notificationsDenied',
};

/**
 * A text of one line with a button that changes it.
 * @param {{ label: string, hint: string, change: string, mayBeEmpty?: boolean }} options texts, and
 *     whether the text can be emptied to have the usual one
 * @param {(text: string) => Promise<unknown>} changed
 * @param {...Node} besides
 */
function textSetting({ label, hint, change, mayBeEmpty = false }, changed, ...besides) {
  const id = uniqueId();
  const field = element('input', {
    id,
    type: 'text',
    autocomplete: 'off',
    spellcheck: 'false',
    'aria-describedby': `${id}-description`,
  });
  const submit = element('button', {}, change);
  let shown = '';
  const refresh = () => {
    const text = field.value.trim();
    submit.disabled = text === shown || (text === '' && !mayBeEmpty);
  };
  const form = element(
    'form',
    { class: 'setting' },
    element('label', { for: id }, label),
    element('p', { id: `${id}-description`, class: 'faint' }, hint),
    element('div', { class: 'field' }, field, submit, ...besides),
  );
  field.addEventListener('input', refresh);
  form.addEventListener('submit', async (event) => {
    event.preventDefault();
    if (submit.disabled) return;
    await changed(field.value.trim());
    if (field.value.trim() === '') field.value = shown;
    refresh();
  });
  return {
    element: form,
    /** @param {string} value */
    update(value) {
      if (value !== shown) field.value = shown = value;
      refresh();
    },
  };
}

/**
 * @param {Application} application
 * @param {(action: () => unknown) => Promise<boolean>} attempt
 * @returns {Part}
 */
export function namePart(application, attempt) {
  const name = textSetting(
    {
      label: words('settings.name'),
      hint: words('settings.nameHint'),
      change: words('settings.nameChange'),
      mayBeEmpty: true,
    },
    (deviceName) => attempt(() => application.changeSettings({ deviceName })),
  );
  name.element.append(
    element('span', { class: 'faint' }, words('about.fingerprint')),
    element('code', { class: 'fingerprint' }, application.self.fingerprint),
  );
  return { element: name.element, update: () => name.update(application.self.name) };
}

/**
 * @param {Application} application
 * @param {(action: () => unknown) => Promise<boolean>} attempt
 * @returns {Part}
 */
export function folderPart(application, attempt) {
  let former = '';
  const change = async (/** @type {string} */ receiveFolder) => {
    const before = application.settings.receiveFolder;
    if (await attempt(() => application.changeSettings({ receiveFolder }))) former = before;
    update(application.settings);
  };
  const folder = textSetting(
    {
      label: words('settings.folder'),
      hint: words('settings.folderHint'),
      change: words('settings.folderChange'),
    },
    change,
    button(words('settings.folderOpen'), () => attempt(() => application.openReceiveFolder()), {
      'aria-label': words('settings.folderOpenNamed'),
    }),
  );
  const stays = element('p', { class: 'faint' });
  const openFormer = button('', () => attempt(() => application.openFormerFolder(former)), {
    class: 'flat',
  });
  const note = element('div', { class: 'field', role: 'status' }, stays, openFormer);
  folder.element.append(note);
  const update = (/** @type {Settings} */ { receiveFolder }) => {
    folder.update(receiveFolder);
    const isChanged = former !== '' && former !== receiveFolder;
    const names = { folder: isolated(former) };
    setShown(note, isChanged);
    showText(stays, isChanged ? words('settings.folderChanged', names) : null);
    setText(openFormer, words('settings.folderOpenOld'));
  };
  return { element: folder.element, update };
}

/**
 * @param {Application} application
 * @param {(action: () => unknown) => Promise<boolean>} attempt
 * @returns {Part}
 */
export function notificationsPart(application, attempt) {
  const status = element('p', { class: 'faint' });
  const allow = button(words('settings.allow'), () =>
    attempt(() => application.requestNotifications()),
  );
  setAttribute(allow, 'aria-label', words('settings.allowNamed'));
  return {
    element: element(
      'div',
      { class: 'switch-row' },
      element(
        'div',
        { class: 'words' },
        element('span', {}, words('settings.notifications')),
        status,
      ),
      allow,
    ),
    update({ notifications }) {
      setText(status, words(NOTIFICATIONS[notifications]));
      setShown(allow, notifications === 'unknown');
    },
  };
}
