// The settings that need more than a switch, and the facts about this program.

import { button } from './controls.js';
import { element, setShown, setText, uniqueId } from './dom.js';

/** @typedef {import('../model/application.js').Application} Application */
/** @typedef {import('../model/types.js').Settings} Settings */
/** @typedef {{ element: HTMLElement, update: (settings: Settings) => void }} Part */

const NOTIFICATIONS = {
  unknown: 'Tell me when something arrives while this window is closed.',
  granted: 'You are told when something arrives while this window is closed.',
  denied: 'This desktop does not let Brevanholt show notifications.',
};

/**
 * @param {Application} application
 * @param {(action: () => unknown) => Promise<boolean>} attempt
 * @returns {Part}
 */
export function folderPart(application, attempt) {
  const id = uniqueId();
  const name = element('input', {
    id,
    autocomplete: 'off',
    spellcheck: 'false',
    'aria-describedby': `${id}-description`,
  });
  const rename = element('button', {}, 'Rename');
  let shown = '';
  const refresh = () => {
    rename.disabled = ['', shown].includes(name.value.trim());
  };
  const form = element(
    'form',
    { class: 'setting' },
    element('label', { for: id }, 'Receive folder'),
    element(
      'p',
      { id: `${id}-description`, class: 'faint' },
      'In Downloads; what arrives is put there.',
    ),
    element(
      'div',
      { class: 'field' },
      name,
      rename,
      button('Open', () => attempt(() => application.openReceiveFolder()), {
        'aria-label': 'Open the receive folder',
      }),
    ),
  );
  name.addEventListener('input', refresh);
  form.addEventListener('submit', async (event) => {
    event.preventDefault();
    const receiveFolder = name.value.trim();
    if (rename.disabled) return;
    await attempt(() => application.changeSettings({ receiveFolder }));
  });
  return {
    element: form,
    update({ receiveFolder }) {
      if (receiveFolder !== shown) name.value = shown = receiveFolder;
      refresh();
    },
  };
}

/**
 * @param {Application} application
 * @param {(action: () => unknown) => Promise<boolean>} attempt
 * @returns {Part}
 */
export function notificationsPart(application, attempt) {
  const words = element('p', { class: 'faint' });
  const allow = button('Allow', () => attempt(() => application.requestNotifications()), {
    'aria-label': 'Allow notifications',
  });
  return {
    element: element(
      'div',
      { class: 'switch-row' },
      element('div', { class: 'words' }, element('span', {}, 'Notifications'), words),
      allow,
    ),
    update({ notifications }) {
      setText(words, NOTIFICATIONS[notifications]);
      setShown(allow, notifications === 'unknown');
    },
  };
}

/**
 * @param {Application} application
 * @returns {HTMLElement}
 */
export function aboutPart({ self }) {
  return element(
    'dl',
    { class: 'about' },
    element('dt', {}, 'Fingerprint of this device'),
    element('dd', {}, element('code', { class: 'fingerprint' }, self.fingerprint)),
    element('dt', {}, 'Brevanholt'),
    element('dd', {}, `Version ${self.version}`),
  );
}
