// What a transfer moves, opened to its names: an offer as a tree with sizes, what was received with a way
// to open each.

import { isolated, plainName } from '../text/foreign_text.js';
import { sizeText } from '../text/format.js';
import { sentenceText, words } from '../text/words.js';
import { needsAnswer } from '../model/transfer_states.js';
import { button } from './controls.js';
import { element, setAttribute, setShown, setText } from './dom.js';
import { icon, iconOf } from './icons.js';

/** @typedef {import('../model/application.js').Application} Application */
/** @typedef {import('../model/types.js').Node} Node */
/** @typedef {import('../model/types.js').Transfer} Transfer */

/** @param {Node} node */
const factsOf = ({ kind, size, fileCount }) =>
  kind === 'directory'
    ? words('send.sum', { items: words('count.files', { count: fileCount }), size: sizeText(size) })
    : sizeText(size);

/** How many things a row can be opened to. @param {Transfer} transfer */
const countOf = ({ itemCount, fileCount }) =>
  itemCount > 1
    ? words('count.items', { count: itemCount })
    : words('count.files', { count: fileCount });

/** Whether there is more to see than the transfer's name. @param {Transfer} transfer */
export const canBeOpened = ({ contents, itemCount, locations, failures, state }) =>
  state !== 'confirming' &&
  (itemCount > 1 ||
    locations.length > 1 ||
    failures.length > 1 ||
    Boolean(contents[0]?.children?.length));

/** @param {Node} node */
function lineOf(node) {
  return element(
    'span',
    { class: 'node' },
    icon(iconOf(node)),
    element('span', { class: 'title', dir: 'auto', title: node.name }, node.name),
    element('span', { class: 'faint' }, factsOf(node)),
  );
}

/**
 * @param {Node[]} nodes
 * @param {number} hidden
 * @returns {HTMLElement}
 */
function tree(nodes, hidden) {
  const rows = nodes.map((node) => {
    if (!node.children?.length) return element('li', {}, lineOf(node));
    const below = element('div', {});
    // A folder's rows are made once it is opened.
    const folder = element('details', {}, element('summary', {}, lineOf(node)), below);
    folder.addEventListener('toggle', () => {
      if (folder.open && !below.firstChild)
        below.append(tree(node.children ?? [], node.hidden ?? 0));
    });
    return element('li', {}, folder);
  });
  return listOf(rows, hidden);
}

/**
 * @param {HTMLElement[]} rows
 * @param {number} hidden how many more there are
 */
function listOf(rows, hidden) {
  const list = element('ul', { role: 'list' }, ...rows);
  if (hidden > 0) {
    list.append(element('li', { class: 'faint' }, words('transfer.notShown', { count: hidden })));
  }
  return list;
}

/**
 * The files that did not arrive, each with the reason.
 * @param {Transfer} transfer
 */
const failuresOf = ({ failures, failureCount }) =>
  listOf(
    failures.map(({ reason }) => element('li', { dir: 'auto' }, sentenceText(reason))),
    failureCount - failures.length,
  );

/**
 * @param {Transfer} transfer
 * @param {Application} application
 * @param {(action: () => unknown) => Promise<boolean>} attempt
 */
function places({ id, locations }, application, attempt) {
  const rows = locations.map((location) => {
    const name = plainName(location.slice(location.lastIndexOf('/') + 1));
    const names = { name: isolated(name) };
    return element(
      'li',
      { class: 'place' },
      element('span', { class: 'title', dir: 'auto', title: name }, name),
      button(words('transfer.open'), () => attempt(() => application.history.open(id, location)), {
        'aria-label': words('transfer.openNamed', names),
      }),
      button(
        words('transfer.showShort'),
        () => attempt(() => application.history.reveal(id, location)),
        {
          'aria-label': words('transfer.showNamed', names),
        },
      ),
    );
  });
  return element('ul', { role: 'list' }, ...rows);
}

/**
 * @param {Application} application
 * @param {(action: () => unknown) => Promise<boolean>} attempt
 * @returns {import('./transfer_parts.js').Part}
 */
export function contentsPart(application, attempt) {
  const summary = element('summary');
  const whole = element('details', { class: 'contents' }, summary);
  /** @type {Transfer | null} */
  let shown = null;
  /** What the list was made of. */
  let made = '';
  const fill = () => {
    if (!shown || !whole.open) return;
    const { contents, itemCount, locations, failures } = shown;
    const wanted = JSON.stringify([locations, contents, itemCount, failures]);
    if (wanted === made) return;
    made = wanted;
    const list =
      locations.length > 1
        ? places(shown, application, attempt)
        : tree(contents, itemCount - contents.length);
    setAttribute(
      list,
      'aria-label',
      needsAnswer(shown)
        ? words('transfer.offered')
        : words('transfer.contentsNamed', { name: isolated(shown.name) }),
    );
    whole.replaceChildren(summary, ...(failures.length > 1 ? [failuresOf(shown)] : []), list);
  };
  whole.addEventListener('toggle', fill);
  return {
    element: whole,
    update(transfer) {
      const { itemCount, state, name } = transfer;
      setShown(whole, canBeOpened(transfer));
      const isNew = shown?.id !== transfer.id || shown.state !== state;
      shown = transfer;
      if (whole.hidden) return;
      setText(summary, countOf(transfer));
      setAttribute(
        summary,
        'aria-label',
        words('transfer.contentsNamed', { name: isolated(name) }),
      );
      // What is asked about is seen without a further step.
      if (isNew && needsAnswer(transfer)) whole.open = itemCount <= 5;
      fill();
    },
  };
}
