// The transfers: first those that wait for an answer, then what runs, then what is over.

import { words } from '../text/words.js';
import { hasEnded, needsAnswer } from '../model/transfer_states.js';
import { bringIn } from './click_guard.js';
import { button } from './controls.js';
import { element, keepingFocus, region, setShown } from './dom.js';
import { nothingYet } from './icons.js';
import { KeyedList } from './keyed_list.js';
import { transferRow } from './transfer_row.js';
import { TransferNews } from './transfer_words.js';

/** @typedef {import('../model/application.js').Application} Application */
/** @typedef {import('../model/types.js').Transfer} Transfer */

/** How many ended transfers get a row at first, and how many more whenever the last row comes near. */
const STEP = 40;

/**
 * @param {Application} application
 * @param {import('./notices.js').Notices} notices
 * @returns {{ requests: HTMLElement, transfers: HTMLElement, update: (part: HTMLElement) => void,
 *             lookAtRequest: () => void }}
 */
export function transfersViews(application, { attempt }) {
  const rowsOf = (/** @type {string} */ label) =>
    element('ul', { class: 'rows', role: 'list', 'aria-label': label });
  const listIn = (/** @type {HTMLElement} */ rows) =>
    new KeyedList(
      rows,
      (/** @type {Transfer} */ { id }) => id,
      () => transferRow(application, attempt),
    );
  const asked = rowsOf(words('transfers.asked'));
  const running = rowsOf(words('transfers.running'));
  const recent = rowsOf(words('transfers.recent'));
  const lists = { asked: listIn(asked), running: listIn(running), recent: listIn(recent) };
  let room = STEP;
  const end = element('div', { class: 'end' });
  const nothing = nothingYet('receive', words('transfers.none')).element;
  const recentHead = element(
    'div',
    { class: 'row-head' },
    element('h3', {}, words('transfers.recent')),
    button(words('transfers.clear'), () => attempt(() => application.history.clear()), {
      class: 'flat',
      'aria-label': words('transfers.clearRecent'),
    }),
  );
  const requests = region(
    'requests',
    words('transfers.requests'),
    element('div', { class: 'card' }, asked),
  );
  const transfers = region(
    'transfers',
    words('transfers.title'),
    element('div', { class: 'card' }, nothing, running, recentHead, recent, end),
  );

  const update = () => {
    const waiting = application.transfers.filter(needsAnswer);
    const over = application.transfers.filter(hasEnded);
    const others = application.transfers.filter((one) => !needsAnswer(one) && !hasEnded(one));
    lists.asked.update(waiting);
    lists.running.update(others);
    lists.recent.update(over.slice(0, room));
    setShown(end, over.length > room);
    setShown(requests, waiting.length > 0);
    setShown(running, others.length > 0);
    for (const part of [recentHead, recent]) setShown(part, over.length > 0);
    setShown(nothing, others.length + over.length === 0);
  };
  const watcher = new IntersectionObserver((entries) => {
    if (!entries.some(({ isIntersecting }) => isIntersecting)) return;
    room += STEP;
    update();
    // It is reported again where it is still near.
    watcher.disconnect();
    watcher.observe(end);
  });
  watcher.observe(end);
  return {
    requests,
    transfers,
    /** @param {HTMLElement} part that holds both */
    update: (part) => bringIn(requests, () => keepingFocus(part, update)),
    /** Gives the first request the focus, unless somebody is at one already. */
    lookAtRequest() {
      if (requests.contains(document.activeElement) || document.querySelector('dialog[open]'))
        return;
      /** @type {HTMLElement | null} */ (asked.firstElementChild)?.focus();
    },
  };
}

/**
 * Speaks the changes of the transfers.
 * @param {Application} application
 * @param {import('./notices.js').Notices} notices
 */
export function speakTransfers(application, notices) {
  const news = new TransferNews();
  const update = () => notices.speak(news.update(application.transfers));
  application.addEventListener('transfers', update);
  update();
}
