// A dialog with a question and two answers.

import { button } from './controls.js';
import { dialog } from './dialog.js';
import { element, setText } from './dom.js';

/**
 * @param {{ title: string, safe: string, other: string }} texts of the heading and the buttons
 * @param {{ onSafe?: () => void, onOther: () => void }} answers
 *   the safe one has the focus
 */
export function questionDialog({ title, safe, other }, { onSafe, onOther }) {
  const body = element('p');
  const answer = (/** @type {(() => void) | undefined} */ run) => () => {
    made.close();
    run?.();
  };
  const made = dialog(
    'question',
    title,
    body,
    element(
      'div',
      { class: 'dialog-actions' },
      button(other, answer(onOther)),
      button(safe, answer(onSafe), { class: 'main', autofocus: true }),
    ),
  );
  return {
    element: made.element,
    /** @param {string} text */
    ask(text) {
      setText(body, text);
      made.open();
    },
  };
}
