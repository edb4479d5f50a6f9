// The top of the window: this device's name and visibility, and the menu.

import { words } from '../text/words.js';
import { switchControl } from './controls.js';
import { element, setAttribute, setText } from './dom.js';
import { menuButton } from './menu.js';

/** @typedef {import('../model/application.js').Application} Application */

/**
 * @param {Application} application
 * @param {import('./notices.js').Notices} notices
 * @param {import('./menu.js').Entry[]} entries of the menu
 */
export function headerView(application, notices, entries) {
  const visible = switchControl(words('header.visible'), null, async (isVisible) => {
    await notices.attempt(() => application.changeSettings({ isVisible }));
    update();
  });
  const name = element('h1', { dir: 'auto' });
  const update = () => {
    setText(name, application.self.name);
    setAttribute(name, 'title', application.self.name);
    visible.update(application.settings.isVisible);
  };
  for (const event of ['settings', 'self']) application.addEventListener(event, update);
  update();
  return element(
    'header',
    {},
    element(
      'div',
      { class: 'self' },
      element('span', { class: 'faint' }, words('settings.name')),
      name,
    ),
    visible.element,
    menuButton(entries),
  );
}
