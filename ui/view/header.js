// The top of the window: this device's name and visibility, the settings and the console.

import { iconButton, switchControl } from './controls.js';
import { element, setAttribute, setShown } from './dom.js';

/** @typedef {import('../model/application.js').Application} Application */

/**
 * @param {Application} application
 * @param {import('./notices.js').Notices} notices
 * @param {{ openSettings: () => void, toggleConsole: () => boolean }} pages
 *   toggleConsole answers whether the console is shown
 */
export function headerView(application, notices, { openSettings, toggleConsole }) {
  const visible = switchControl('Visible nearby', null, async (isVisible) => {
    await notices.attempt(() => application.changeSettings({ isVisible }));
    update();
  });
  const consoleButton = iconButton(
    'console',
    'Developer console',
    () => {
      setAttribute(consoleButton, 'aria-pressed', String(toggleConsole()));
    },
    { 'aria-pressed': 'false' },
  );
  const update = () => {
    visible.update(application.settings.isVisible);
    setShown(consoleButton, application.settings.showsConsole);
    if (consoleButton.hidden) setAttribute(consoleButton, 'aria-pressed', 'false');
  };
  application.addEventListener('settings', update);
  update();
  return element(
    'header',
    {},
    element('h1', { title: application.self.name }, application.self.name),
    visible.element,
    consoleButton,
    iconButton('settings', 'Settings', openSettings),
  );
}
