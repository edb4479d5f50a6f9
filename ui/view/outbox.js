// The items to be sent next, and the controls that add to them.

import { words } from '../text/words.js';
import { button, iconButton } from './controls.js';
import { element, keepingFocus, region, setAttribute, setShown, setText } from './dom.js';
import { excerpt, isolated, plainName, shortened } from '../text/foreign_text.js';
import { sizeText } from '../text/format.js';
import { countAtTop } from '../model/contents.js';
import { icon, iconOf, nothingYet } from './icons.js';
import { KeyedList } from './keyed_list.js';
import { showPreview } from './preview.js';
import { textDialog } from './text_dialog.js';

/** @typedef {import('../model/application.js').Application} Application */
/** @typedef {import('../model/types.js').Item} Item */

const TITLE_CLUSTERS = 80;

/** @param {Item} item */
const titleOf = ({ kind, text, name }) =>
  kind === 'text'
    ? excerpt(text?.trim() || words('item.text'), TITLE_CLUSTERS, 1)
    : shortened(plainName(name), TITLE_CLUSTERS);

/** The folders and files that were chosen, not what is in them. @param {Item[]} outbox */
const chosenIn = (outbox) => outbox.filter(({ relativePath }) => !relativePath?.includes('/'));

/** What a row shows: an item, and of a folder all that is in it. @typedef {{ item: Item, size: number, fileCount: number }} Chosen */

/**
 * A folder is one row.
 * @param {Item[]} outbox
 * @returns {Chosen[]}
 */
function rowsOf(outbox) {
  /** @type {Map<string, { size: number, fileCount: number }>} */
  const sums = new Map();
  for (const { relativePath, size, kind } of outbox) {
    if (!relativePath) continue;
    const cut = relativePath.indexOf('/');
    const folder = cut < 0 ? relativePath : relativePath.slice(0, cut);
    const sum = sums.get(folder) ?? { size: 0, fileCount: 0 };
    sum.size += size;
    if (kind === 'file') ++sum.fileCount;
    sums.set(folder, sum);
  }
  return chosenIn(outbox).map((item) => {
    const sum = item.kind === 'directory' ? sums.get(item.name) : undefined;
    return { item, size: item.size, fileCount: 0, ...sum };
  });
}

/** @param {Chosen} chosen */
function factsOf({ item, size, fileCount }) {
  if (item.kind === 'text') return words('send.textFacts', { size: sizeText(size) });
  if (item.kind !== 'directory') return sizeText(size);
  const files = words('count.files', { count: fileCount });
  return words('send.folderFacts', { files, size: sizeText(size) });
}

/**
 * @param {Chosen} first
 * @param {(item: Item) => void} remove
 * @param {(item: Item, side: number) => Promise<Uint8Array | null>} preview
 * @returns {import('./keyed_list.js').Row<Chosen>}
 */
function itemRow(first, remove, preview) {
  let shown = first.item;
  const frame = element('div', { class: 'picture' }, icon(iconOf(first.item)));
  const title = element('span', { class: 'title', dir: 'auto' });
  const facts = element('span', { class: 'faint' });
  const removal = iconButton('close', '', () => remove(shown), { 'data-takes-focus': true });
  const dropPreview = showPreview(frame, (side) => preview(shown, side));
  return {
    element: element(
      'li',
      { class: 'row' },
      frame,
      element('div', { class: 'words' }, title, facts),
      removal,
    ),
    update(chosen) {
      shown = chosen.item;
      setText(title, titleOf(shown));
      setAttribute(title, 'title', shown.path || null);
      setText(facts, factsOf(chosen));
      const name = words('send.removeItem', { name: isolated(titleOf(shown)) });
      setAttribute(removal, 'aria-label', name);
      setAttribute(removal, 'title', words('send.remove'));
    },
    remove: dropPreview,
  };
}

/**
 * @param {Application} application
 * @param {import('./notices.js').Notices} notices
 */
export function outboxView(application, notices) {
  const { attempt } = notices;
  const writing = textDialog((text) => attempt(() => application.choosing.addText(text)));
  const rows = element('ul', { class: 'rows', role: 'list', 'aria-label': words('send.list') });
  const total = element('span', { class: 'faint' });
  const clear = button(words('send.clear'), () => attempt(() => application.choosing.clear()), {
    class: 'flat',
    'aria-label': words('send.clearAll'),
  });
  const sum = element('div', { class: 'row-foot' }, total, clear);
  const nothing = nothingYet('files', words('send.empty')).element;
  /** @type {KeyedList<Chosen>} */
  const list = new KeyedList(
    rows,
    ({ item }) => `${item.kind}:${item.path || titleOf(item)}`,
    (chosen) =>
      itemRow(
        chosen,
        (shown) => attempt(() => application.choosing.remove(shown)),
        (shown, side) => application.choosing.preview(shown, side),
      ),
  );

  const toolbar = element('div', {
    class: 'toolbar',
    role: 'group',
    'aria-label': words('send.add'),
  });
  for (const [picture, label, run] of /** @type {const} */ ([
    ['files', words('send.addFiles'), () => attempt(() => application.choosing.pickFiles())],
    ['folder', words('send.addFolder'), () => attempt(() => application.choosing.pickFolder())],
    ['text', words('send.writeText'), () => writing.open()],
  ])) {
    const made = button('', run);
    made.append(icon(picture), label);
    toolbar.append(made);
  }

  const card = element('div', { class: 'card' }, nothing, rows, sum);
  const section = region('outbox', words('send.title'), card, toolbar, writing.element);
  const update = () =>
    keepingFocus(section, () => {
      const { outbox } = application;
      list.update(rowsOf(outbox));
      for (const part of [rows, sum]) setShown(part, outbox.length > 0);
      setShown(nothing, outbox.length === 0);
      const size = outbox.reduce((bytes, item) => bytes + item.size, 0);
      const items = words('count.items', { count: countAtTop(outbox) });
      setText(total, words('send.sum', { items, size: sizeText(size) }));
    });
  application.addEventListener('outbox', update);
  update();
  return section;
}
