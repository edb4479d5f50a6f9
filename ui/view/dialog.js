// A dialog over the window. Escape closes it and returns the focus.

import { words } from '../text/words.js';
import { iconButton } from './controls.js';
import { element, uniqueId } from './dom.js';

/**
 * @param {string} className
 * @param {string} title
 * @param {...Node} children
 */
export function dialog(className, title, ...children) {
  const id = uniqueId();
  const heading = element('h2', { id, tabindex: -1 }, title);
  const made = element(
    'dialog',
    {
      class: className,
      'aria-labelledby': id,
      on: {
        /** @param {MouseEvent} event on the ground around it */
        mousedown: (event) => {
          if (event.target === made) made.close();
        },
      },
    },
    element(
      'div',
      { class: 'dialog' },
      element(
        'div',
        { class: 'dialog-title' },
        heading,
        iconButton('close', words('dialog.close'), () => made.close()),
      ),
      ...children,
    ),
  );
  return {
    element: made,
    open() {
      made.showModal();
      /** @type {HTMLElement} */ (made.querySelector('[autofocus]') ?? heading).focus();
    },
    close: () => made.close(),
  };
}
