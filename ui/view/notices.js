// The window's messages: a banner while there is a problem, a message after a failed action, and
// sentences that only a screen reader speaks.

import { bringIn } from './click_guard.js';
import { words } from '../text/words.js';
import { iconButton } from './controls.js';
import { element, setShown, setText, showText } from './dom.js';
import { icon } from './icons.js';
import { suggestionBanner } from './suggestion.js';

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
    iconButton('close', words('notices.dismiss'), () => this.#showFailure(null)),
  );
  #damageText = element('p');
  #damage = element(
    'div',
    { class: 'banner', hidden: true },
    icon('warning'),
    this.#damageText,
    iconButton('close', words('notices.dismissDamage'), () => setShown(this.#damage, false)),
  );
  #spoken = element('div', { class: 'unseen', role: 'status' });

  element = element(
    'div',
    { class: 'notices' },
    element('div', { role: 'status' }, this.#damage, this.#problem),
    element('div', { role: 'alert' }, this.#failureBanner),
    this.#spoken,
  );

  /** Why the last action failed, or null. @type {string | null} */
  failure = null;

  /** @param {Application} application */
  constructor(application) {
    setShown(this.#damage, application.damage !== null);
    setText(this.#damageText, application.damage ?? '');
    const show = () => {
      showText(this.#problemText, application.problem);
      setShown(this.#problem, Boolean(application.problem));
    };
    application.addEventListener('problem', () => bringIn(this.element, show));
    show();
    this.element.append(suggestionBanner(application, this.attempt));
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

  /** @param {string[]} sentences with or without their last points */
  speak(sentences) {
    if (sentences.length === 0) return;
    const ended = sentences.map((news) =>
      /[.…?!]$/.test(news) ? news : words('news.sentence', { news }),
    );
    setText(this.#spoken, ended.join(' '));
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
