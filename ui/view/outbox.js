// The items to be sent next, and the controls that add to them.

import { button, iconButton } from './controls.js';
import { element, keepingFocus, region, setAttribute, setShown, setText } from './dom.js';
import { excerpt, plainName, shortened } from '../text/foreign_text.js';
import { countText, sizeText } from '../text/format.js';
import { icon, nothingYet } from './icons.js';
import { KeyedList } from './keyed_list.js';
import { textDialog } from './text_dialog.js';

/** @typedef {import('../model/application.js').Application} Application */
/** @typedef {import('../model/types.js').Item} Item */

const PICTURES = /** @type {const} */ ({ file: 'file', directory: 'folder', text: 'text' });

const TITLE_CLUSTERS = 80;

/** @param {Item} item */
const titleOf = ({ kind, text, name }) =>
  kind === 'text'
    ? excerpt(text?.trim() || 'Text', TITLE_CLUSTERS, 1)
    : shortened(plainName(name), TITLE_CLUSTERS);

/** The folders and files that were chosen, not what is in them. @param {Item[]} outbox */
const chosenIn = (outbox) => outbox.filter(({ relativePath }) => !relativePath?.includes('/'));

/**
 * A folder is one row, with the size of all that is in it.
 * @param {Item[]} outbox
 * @returns {Item[]}
 */
function rowsOf(outbox) {
  /** @type {Map<string, number>} */
  const sizes = new Map();
  for (const { relativePath, size } of outbox) {
    const folder = relativePath?.split('/')[0];
    if (folder) sizes.set(folder, (sizes.get(folder) ?? 0) + size);
  }
  return chosenIn(outbox).map((item) =>
    item.kind === 'directory' ? { ...item, size: sizes.get(item.name) ?? 0 } : item,
  );
}

/** @param {Item} item */
function factsOf(item) {
  if (item.kind === 'text') return `Text · ${sizeText(item.size)}`;
  return item.kind === 'directory' ? `Folder · ${sizeText(item.size)}` : sizeText(item.size);
}

/**
 * @param {Item} first
 * @param {(item: Item) => void} remove
 * @returns {import('./keyed_list.js').Row<Item>}
 */
function itemRow(first, remove) {
  let shown = first;
  const title = element('span', { class: 'title' });
  const facts = element('span', { class: 'faint' });
  const removal = iconButton('close', '', () => remove(shown), { 'data-takes-focus': true });
  return {
    element: element(
      'li',
      { class: 'row' },
      icon(PICTURES[first.kind] ?? 'file'),
      element('div', { class: 'words' }, title, facts),
      removal,
    ),
    update(item) {
      shown = item;
      setText(title, titleOf(item));
      setAttribute(title, 'title', item.path || null);
      setText(facts, factsOf(item));
      const name = `Remove ${titleOf(item)}`;
      setAttribute(removal, 'aria-label', name);
      setAttribute(removal, 'title', 'Remove');
    },
  };
}

/**
 * @param {Application} application
 * @param {import('./notices.js').Notices} notices
 */
export function outboxView(application, notices) {
  const { attempt } = notices;
  const writing = textDialog((text) => attempt(() => application.addText(text)));
  const rows = element('ul', { class: 'rows', role: 'list', 'aria-label': 'What is to be sent' });
  const total = element('span', { class: 'faint' });
  const clear = button('Clear', () => attempt(() => application.clearOutbox()), {
    class: 'flat',
    'aria-label': 'Clear what is to be sent',
  });
  const sum = element('div', { class: 'row-foot' }, total, clear);
  const nothing = nothingYet(
    'files',
    'Drop files and folders into this window, or choose them here.',
  ).element;
  /** @type {KeyedList<Item>} */
  const list = new KeyedList(
    rows,
    (item) => `${item.kind}:${item.path || titleOf(item)}`,
    (item) => itemRow(item, (shown) => attempt(() => application.removeItem(shown))),
  );

  const toolbar = element('div', { class: 'toolbar', role: 'group', 'aria-label': 'Add' });
  for (const [picture, label, run] of /** @type {const} */ ([
    ['files', 'Add files', () => attempt(() => application.pickFiles())],
    ['folder', 'Add folder', () => attempt(() => application.pickFolder())],
    ['text', 'Write text', () => writing.open()],
  ])) {
    const made = button('', run);
    made.append(icon(picture), label);
    toolbar.append(made);
  }

  const card = element('div', { class: 'card' }, nothing, rows, sum);
  const section = region('outbox', 'Send', card, toolbar, writing.element);
  const update = () =>
    keepingFocus(section, () => {
      const { outbox } = application;
      list.update(rowsOf(outbox));
      for (const part of [rows, sum]) setShown(part, outbox.length > 0);
      setShown(nothing, outbox.length === 0);
      const size = outbox.reduce((bytes, item) => bytes + item.size, 0);
      setText(total, `${countText(outbox.length, 'item')}, ${sizeText(size)}`);
    });
  application.addEventListener('outbox', update);
  update();
  return section;
}
