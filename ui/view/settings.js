// The settings dialog. A switch takes effect at once, and goes back if the host refuses.

import { words } from '../text/words.js';
import { addressPart } from './address_part.js';
import { switchControl } from './controls.js';
import { dialog } from './dialog.js';
import { element, setText } from './dom.js';
import { knownDevicesPart } from './known_devices.js';
import { folderPart, namePart, notificationsPart } from './settings_parts.js';
import { suggestionBanner } from './suggestion.js';

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
    words('settings.visible'),
    words('settings.visibleHint'),
    (isVisible) => change({ isVisible }),
  );
  const startup = switchControl(
    words('settings.startup'),
    words('settings.startupHint'),
    (launchAtStartup) => change({ launchAtStartup }),
  );
  const console = switchControl(
    words('settings.console'),
    words('settings.consoleHint'),
    (showsConsole) => change({ showsConsole }),
  );
  const name = namePart(application, attempt);
  const folder = folderPart(application, attempt);
  const notifications = notificationsPart(application, attempt);

  const update = () => {
    const { settings } = application;
    name.update(settings);
    folder.update(settings);
    visible.update(settings.isVisible);
    startup.update(settings.launchAtStartup);
    notifications.update(settings);
    console.update(settings.showsConsole);
  };
  for (const event of ['settings', 'self']) application.addEventListener(event, update);
  update();
  const made = dialog(
    'settings',
    words('settings.title'),
    failure,
    suggestionBanner(application, attempt),
    element('div', { class: 'card' }, name.element, folder.element),
    element('div', { class: 'card' }, visible.element, startup.element, notifications.element),
    element('div', { class: 'card' }, addressPart(application, attempt)),
    element('div', { class: 'card' }, knownDevicesPart(application, attempt)),
    element('div', { class: 'card' }, console.element),
  );
  return {
    element: made.element,
    open() {
      setText(failure, '');
      made.open();
    },
  };
}
