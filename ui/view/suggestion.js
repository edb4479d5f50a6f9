// What the window suggests: a sentence, and a button that does something about it.

import { words } from '../text/words.js';
import { button, iconButton } from './controls.js';
import { element, setShown, showText } from './dom.js';

/**
 * @param {import('../model/application.js').Application} application
 * @param {(action: () => unknown) => Promise<boolean>} attempt
 */
export function suggestionBanner(application, attempt) {
  const text = element('p');
  const taking = button('', () => attempt(() => application.suggestions.take()), { class: 'flat' });
  const banner = element(
    'div',
    { class: 'banner suggestion', hidden: true },
    text,
    taking,
    iconButton('close', words('notices.dismissSuggestion'), () =>
      application.suggestions.dismiss(),
    ),
  );
  const update = () => {
    const { suggestion } = application;
    const hadFocus = banner.contains(document.activeElement);
    showText(text, suggestion?.text ?? null);
    showText(taking, suggestion?.label ?? null);
    setShown(banner, suggestion !== null);
    if (hadFocus && !suggestion) {
      /** @type {HTMLElement | null} */ (
        banner.closest('dialog')?.querySelector('h2') ?? document.querySelector('main')
      )?.focus();
    }
  };
  application.addEventListener('suggestion', update);
  update();
  return element('div', { role: 'status' }, banner);
}
