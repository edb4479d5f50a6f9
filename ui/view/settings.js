// The settings dialog. A switch takes effect at once, and goes back if the host refuses.

import { addressPart } from './address_part.js';
import { switchControl } from './controls.js';
import { dialog } from './dialog.js';
import { element, setText } from './dom.js';
import { knownDevicesPart } from './known_devices.js';
import { aboutPart, folderPart, notificationsPart } from './settings_parts.js';

/** @typedef {import('../model/application.js').Application} Application */
/** @typedef {import('../model/types.js').Settings} Settings */

/**
 * @param {Application} application
 * @param {import('./notices.js').Notices} notices
 */
export function settingsDialog(application, notices) {
  const failure = element('p', { class: 'failure-text', role: 'alert' });
  /** @param {() => unknown} action */
  const attempt = async (action) => {
    const worked = await notices.attempt(action);
    setText(failure, worked ? '' : (notices.failure ?? ''));
    update();
    return worked;
  };
  const change = (/** @type {Partial<Settings>} */ partial) =>
    attempt(() => application.changeSettings(partial));

  const visible = switchControl(
    'Visible nearby',
    'Devices in the same network see this one.',
    (isVisible) => change({ isVisible }),
  );
  const startup = switchControl(
    'Start at login',
    'Brevanholt waits in the background to receive.',
    (launchAtStartup) => change({ launchAtStartup }),
  );
  const console = switchControl(
    'Developer console',
    'Call the host’s methods and watch its events.',
    (showsConsole) => change({ showsConsole }),
  );
  const folder = folderPart(application, attempt);
  const notifications = notificationsPart(application, attempt);

  const update = () => {
    const { settings } = application;
    folder.update(settings);
    visible.update(settings.isVisible);
    startup.update(settings.launchAtStartup);
    notifications.update(settings);
    console.update(settings.showsConsole);
  };
  application.addEventListener('settings', update);
  update();
  const made = dialog(
    'settings',
    'Settings',
    failure,
    element('div', { class: 'card' }, folder.element),
    element('div', { class: 'card' }, visible.element, startup.element, notifications.element),
    element('div', { class: 'card' }, addressPart(application, attempt)),
    element('div', { class: 'card' }, knownDevicesPart(application, attempt)),
    element('div', { class: 'card' }, console.element),
    aboutPart(application),
  );
  return {
    element: made.element,
    open() {
      setText(failure, '');
      made.open();
    },
  };
}
