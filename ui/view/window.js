// Puts the window together from its regions and overlays.

import { consoleView } from './console.js';
import { devicesView } from './devices.js';
import { element, setShown } from './dom.js';
import { headerView } from './header.js';
import { icon } from './icons.js';
import { Notices } from './notices.js';
import { outboxView } from './outbox.js';
import { settingsDialog } from './settings.js';
import { speakTransfers, transfersViews } from './transfers.js';

/** @typedef {import('../model/application.js').Application} Application */

/** @param {Application} application */
function dropTarget(application) {
  const overlay = element(
    'div',
    { class: 'drop-target', hidden: true },
    element('div', {}, icon('add'), element('p', {}, 'Drop here to add it to what you send')),
  );
  const update = () => setShown(overlay, application.isDragOver);
  application.addEventListener('drag', update);
  update();
  return overlay;
}

/**
 * Shows an application in an element.
 * @param {HTMLElement} root
 * @param {Application} application
 * @param {import('./console.js').ConsoleHost} host what the developer console speaks to
 */
export function mountWindow(root, application, host) {
  const notices = new Notices(application);
  const { requests, transfers, update } = transfersViews(application, notices);
  const home = element(
    'div',
    { class: 'home' },
    element(
      'div',
      { class: 'sending' },
      outboxView(application, notices),
      devicesView(application, notices),
    ),
    transfers,
  );
  const consolePage = consoleView(host, notices);
  const settings = settingsDialog(application, notices);
  const main = element('main', { tabindex: -1 }, requests, home, consolePage);

  const show = (/** @type {boolean} */ showsConsole) => {
    setShown(consolePage, showsConsole);
    setShown(home, !showsConsole);
    return showsConsole;
  };
  application.addEventListener('transfers', () => update(main));
  application.addEventListener('settings', () => {
    if (!application.settings.showsConsole) show(false);
  });
  update(main);
  show(false);
  const header = headerView(application, notices, {
    openSettings: settings.open,
    toggleConsole: () => show(!home.hidden),
  });
  root.replaceChildren(
    element('div', { class: 'top' }, header, notices.element),
    main,
    settings.element,
    dropTarget(application),
  );
  speakTransfers(application, notices);
}

/**
 * Says that the application could not start.
 * @param {HTMLElement} root
 * @param {string} why
 */
export function showStartFailure(root, why) {
  root.replaceChildren(
    element(
      'main',
      { class: 'start-failure', role: 'alert' },
      icon('warning'),
      element('h1', {}, 'Brevanholt could not start'),
      element('p', {}, why),
    ),
  );
}
