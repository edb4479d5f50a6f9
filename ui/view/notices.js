// What the window has to say: a banner while something is wrong, a message when an action failed, and
// words that only a screen reader speaks.

import { iconButton } from './controls.js';
import { element, setShown, setText, showText } from './dom.js';
import { icon } from './icons.js';

/** @typedef {import('../model/application.js').Application} Application */

/** @param {unknown} error */
export const errorText = (error) => (error instanceof Error ? error.message : String(error));

export class Notices {
  #problemText = element('p');
  #problem = element('div', { class: 'banner', hidden: true }, icon('warning'), this.#problemText);
  #failureText = element('p');
  #failureBanner = element(
    'div',
    { class: 'banner failure', hidden: true },
    icon('warning'),
    this.#failureText,
    iconButton('close', 'Dismiss this message', () => this.#showFailure(null)),
  );
  #spoken = element('div', { class: 'unseen', role: 'status' });

  element = element(
    'div',
    { class: 'notices' },
    element('div', { role: 'status' }, this.#problem),
    element('div', { role: 'alert' }, this.#failureBanner),
    this.#spoken,
  );

  /** Why the last action failed, or null. @type {string | null} */
  failure = null;

  /** @param {Application} application */
  constructor(application) {
    const show = () => {
      showText(this.#problemText, application.problem);
      setShown(this.#problem, Boolean(application.problem));
    };
    application.addEventListener('problem', show);
    show();
  }

  /**
   * Runs an action and shows why it failed, if it did.
   * @param {() => unknown} action
   * @returns {Promise<boolean>} whether it worked
   */
  attempt = async (action) => {
    this.#showFailure(null);
    try {
      await action();
      return true;
    } catch (error) {
      this.#showFailure(errorText(error));
      return false;
    }
  };

  /** @param {string[]} sentences */
  speak(sentences) {
    if (sentences.length > 0) setText(this.#spoken, `${sentences.join('. ')}.`);
  }

  /** @param {string | null} text */
  #showFailure(text) {
    this.failure = text;
    const hadFocus = this.#failureBanner.contains(document.activeElement);
    showText(this.#failureText, text);
    setShown(this.#failureBanner, Boolean(text));
    if (!text && hadFocus) document.querySelector('main')?.focus();
  }
}
