// Puts the window together from its regions and overlays.

import { currentLanguage, isRightToLeft } from '../text/locale.js';
import { words } from '../text/words.js';
import { hasEnded, needsAnswer } from '../model/transfer_states.js';
import { aboutDialog } from './about.js';
import { consoleView } from './console.js';
import { devicesView } from './devices.js';
import { element, setShown } from './dom.js';
import { dropHint } from './drop_hint.js';
import { headerView } from './header.js';
import { icon } from './icons.js';
import { Notices } from './notices.js';
import { outboxView } from './outbox.js';
import { questionDialog } from './question.js';
import { settingsDialog } from './settings.js';
import { keysText, listenToKeys, shortcutsDialog } from './shortcuts.js';
import { speakTransfers, transfersViews } from './transfers.js';

/** @typedef {import('../model/application.js').Application} Application */

/** In percent. */
const ZOOM = { step: 10, least: 50, most: 300 };

/** Removes the listeners of the window that is shown; called when another one is mounted. */
let forget = () => {};

/**
 * The dialogs about the end of the program or of its window.
 * @param {Application} application
 * @param {(action: () => unknown) => Promise<boolean>} attempt
 */
function endings(application, attempt) {
  const quitting = questionDialog(
    { title: words('quit.title'), safe: words('dialog.cancel'), other: words('quit.now') },
    { onOther: () => attempt(() => application.program.quit()) },
  );
  const staying = questionDialog(
    { title: words('stays.title'), safe: words('stays.keep'), other: words('stays.quit') },
    {
      onSafe: () => attempt(() => application.program.closeWindow()),
      onOther: () => attempt(() => application.program.quit()),
    },
  );
  return {
    elements: [quitting.element, staying.element],
    /** Quits; asks first if that would stop a transfer. */
    quit() {
      const count = application.transfers.filter((one) => !hasEnded(one)).length;
      if (count > 0) quitting.ask(words('quit.words', { count }));
      else attempt(() => application.program.quit());
    },
    /** The window is about to be closed, and nothing on the desktop shows that the program stays. */
    async tellItStays() {
      if (application.settings.knowsItStays) return application.program.closeWindow();
      await attempt(() => application.changeSettings({ knowsItStays: true }));
      staying.ask(words('stays.words'));
    },
  };
}

/**
 * Shows an application in an element.
 * @param {HTMLElement} root
 * @param {Application} application
 * @param {import('./console.js').ConsoleHost} host what the developer console speaks to
 * @returns {{ closeAsked: () => void }} what else the window is told
 */
export function mountWindow(root, application, host) {
  forget();
  document.documentElement.lang = currentLanguage();
  document.documentElement.dir = isRightToLeft() ? 'rtl' : 'ltr';
  const notices = new Notices(application);
  const { attempt } = notices;
  const { requests, transfers, update, lookAtRequest } = transfersViews(application, notices);
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
  const shortcuts = shortcutsDialog();
  const about = aboutDialog(application);
  const ends = endings(application, attempt);
  const main = element('main', { tabindex: -1 }, requests, home, consolePage);

  const showConsole = (/** @type {boolean} */ isShown) => {
    setShown(consolePage, isShown);
    setShown(home, !isShown);
  };
  const zoomBy = (/** @type {number} */ change) => {
    const wanted = change === 0 ? 100 : application.settings.zoom + change;
    const zoom = Math.min(ZOOM.most, Math.max(ZOOM.least, wanted));
    attempt(() => application.changeSettings({ zoom }));
  };
  const deeds = {
    addFiles: () => attempt(() => application.choosing.pickFiles()),
    paste: () => attempt(() => application.program.paste()),
    settings: settings.open,
    help: () => attempt(() => application.program.openHelp()),
    shortcuts: shortcuts.open,
    larger: () => zoomBy(ZOOM.step),
    smaller: () => zoomBy(-ZOOM.step),
    normal: () => zoomBy(0),
    close: () => attempt(() => application.program.askToClose()),
    quit: ends.quit,
  };
  const keys = keysText();
  const header = headerView(application, notices, [
    { label: words('menu.settings'), keys: keys.settings, run: deeds.settings },
    { label: words('menu.shortcuts'), keys: keys.shortcuts, run: deeds.shortcuts },
    {
      label: words('menu.console'),
      run: () => showConsole(!home.hidden),
      isShown: () => application.settings.showsConsole,
    },
    { label: words('menu.help'), keys: keys.help, run: deeds.help },
    { label: words('menu.about'), run: about.open },
    { label: words('menu.quit'), keys: keys.quit, run: deeds.quit },
  ]);
  application.addEventListener('transfers', () => update(main));
  application.addEventListener('settings', () => {
    if (!application.settings.showsConsole) showConsole(false);
  });
  update(main);
  showConsole(false);
  root.replaceChildren(
    element('div', { class: 'top' }, header, notices.element),
    main,
    settings.element,
    shortcuts.element,
    about.element,
    ...ends.elements,
    dropHint(application),
  );
  speakTransfers(application, notices);
  const stopKeys = listenToKeys(deeds);
  // A notification opens the window because of a request, so the request gets the focus.
  const look = () => {
    if (application.transfers.some(needsAnswer)) lookAtRequest();
  };
  addEventListener('focus', look);
  forget = () => {
    stopKeys();
    removeEventListener('focus', look);
  };
  return { closeAsked: ends.tellItStays };
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
      element('h1', {}, words('start.failed')),
      element('p', {}, why),
    ),
  );
}
