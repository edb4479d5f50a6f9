// Parts of a transfer's row: the code to compare, how far it is, the text that was received.

import { element, setAttribute, setShown, setText } from './dom.js';
import { excerpt, isolated } from '../text/foreign_text.js';
import { share } from '../text/format.js';
import { words } from '../text/words.js';

/** @typedef {import('../model/types.js').Transfer} Transfer */
/** @typedef {{ element: HTMLElement, update: (transfer: Transfer) => void }} Part */

/**
 * The six digits that both devices show.
 * @returns {Part}
 */
export function codePart() {
  const halves = [element('span'), element('span')];
  const digits = element('p', { class: 'code', role: 'img' }, ...halves);
  return {
    element: digits,
    update({ state, code }) {
      setShown(digits, state === 'confirming' && code !== null);
      if (!code) return;
      setText(halves[0], code.slice(0, 3));
      setText(halves[1], code.slice(3));
      setAttribute(digits, 'aria-label', words('transfer.code', { digits: [...code].join(' ') }));
    },
  };
}

/**
 * The progress bar; indeterminate until bytes move.
 * @returns {Part}
 */
export function progressPart() {
  const bar = element('progress', { max: 1 });
  return {
    element: bar,
    update(transfer) {
      const { state, name } = transfer;
      setShown(bar, state === 'active' || state === 'connecting');
      if (bar.hidden) return;
      setAttribute(bar, 'aria-label', words('transfer.progressOf', { name: isolated(name) }));
      setAttribute(bar, 'value', state === 'active' ? share(transfer).toFixed(4) : null);
    },
  };
}

const EXCERPT_CLUSTERS = 600;
const EXCERPT_LINES = 12;

/**
 * The beginning of a text that was received; “Copy” takes the whole.
 * @returns {Part}
 */
export function textPart() {
  const text = element('blockquote', {
    class: 'received-text',
    role: 'group',
    tabindex: 0,
    'aria-label': words('transfer.receivedText'),
  });
  return {
    element: text,
    update(transfer) {
      setShown(text, transfer.state === 'complete' && transfer.text !== null);
      if (!text.hidden)
        setText(text, excerpt(transfer.text ?? '', EXCERPT_CLUSTERS, EXCERPT_LINES));
    },
  };
}
