// The menu in the window's header.

import { words } from '../text/words.js';
import { button, iconButton } from './controls.js';
import { element, setAttribute, setShown, uniqueId } from './dom.js';

/** `keys`: what does the same. `isShown`: for an entry that is not always there.
 *  @typedef {{ label: string, run: () => void, keys?: string, isShown?: () => boolean }} Entry */

/**
 * A button that opens the menu. The arrow keys move in it, Escape and a click elsewhere close it.
 * @param {Entry[]} entries
 */
export function menuButton(entries) {
  const id = uniqueId();
  const rows = entries.map(({ label, run, keys = '' }) => {
    const row = button(
      '',
      () => {
        close(true);
        run();
      },
      { role: 'menuitem', tabindex: -1, 'aria-keyshortcuts': null },
    );
    row.append(element('span', {}, label), element('kbd', { 'aria-hidden': 'true' }, keys));
    return row;
  });
  const menu = element('div', { id, class: 'menu', role: 'menu', hidden: true }, ...rows);
  setAttribute(menu, 'aria-label', words('header.menu'));
  const opener = iconButton('menu', words('header.menu'), () => (menu.hidden ? open() : close()), {
    'aria-haspopup': 'menu',
    'aria-expanded': 'false',
    'aria-controls': id,
  });
  const whole = element('div', { class: 'menu-place' }, opener, menu);

  const shown = () => rows.filter((row) => !row.hidden);
  const open = () => {
    entries.forEach(({ isShown }, at) => setShown(rows[at], isShown?.() ?? true));
    setShown(menu, true);
    setAttribute(opener, 'aria-expanded', 'true');
    shown()[0].focus();
  };
  const close = (returnsFocus = false) => {
    if (menu.hidden) return;
    setShown(menu, false);
    setAttribute(opener, 'aria-expanded', 'false');
    if (returnsFocus) opener.focus();
  };
  const move = (/** @type {number} */ steps) => {
    const all = shown();
    const at = all.indexOf(/** @type {HTMLButtonElement} */ (document.activeElement));
    all[(at + steps + all.length) % all.length].focus();
  };
  /** @type {Record<string, () => void>} */
  const keys = {
    ArrowDown: () => move(1),
    ArrowUp: () => move(-1),
    Home: () => shown()[0].focus(),
    End: () => shown()[shown().length - 1].focus(),
    Escape: () => close(true),
  };
  menu.addEventListener('keydown', (event) => {
    if (!keys[event.key]) return;
    event.preventDefault();
    keys[event.key]();
  });
  whole.addEventListener('focusout', (event) => {
    if (!whole.contains(/** @type {Node | null} */ (event.relatedTarget))) close();
  });
  return whole;
}
