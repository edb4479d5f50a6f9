// Buttons and switches.

import { element, setAttribute, setShown, setText, uniqueId } from './dom.js';
import { icon } from './icons.js';

/**
 * @typedef {{ id: string, label: string, run: () => unknown, name?: string, isMain?: boolean,
 *             done?: string }} Action
 *   name: what it is called where the label alone does not say what it acts on
 *   done: what the button says once it worked, where nothing else shows that
 */

/**
 * @param {string} label
 * @param {() => void} run
 * @param {Record<string, any>} [attributes]
 */
export function button(label, run, attributes = {}) {
  return element('button', { type: 'button', on: { click: run }, ...attributes }, label);
}

/**
 * A button with an icon as its label.
 * @param {import('./icons.js').IconName} picture
 * @param {string} name
 * @param {() => void} run
 * @param {Record<string, any>} [attributes]
 */
export function iconButton(picture, name, run, attributes = {}) {
  const made = button('', run, {
    class: 'icon-button',
    'aria-label': name,
    title: name,
    ...attributes,
  });
  made.append(icon(picture));
  return made;
}

/** The buttons of a row. A button stays the same element while its action's id stays. */
export class ActionRow {
  element = element('div', { class: 'actions' });
  /** @type {Map<string, { made: HTMLButtonElement, action: Action }>} */
  #buttons = new Map();

  /** @param {Action[]} actions */
  update(actions) {
    for (const [id, { made }] of this.#buttons) {
      if (actions.some((action) => action.id === id)) continue;
      made.remove();
      this.#buttons.delete(id);
    }
    for (const action of actions) this.#show(action);
    setShown(this.element, actions.length > 0);
  }

  /** @param {Action} action */
  showDone({ id, done }) {
    const made = this.#buttons.get(id)?.made;
    if (made && done) setText(made, done);
  }

  /** @param {Action} action */
  #show(action) {
    let known = this.#buttons.get(action.id);
    if (!known) {
      known = { made: button('', () => this.#buttons.get(action.id)?.action.run()), action };
      this.#buttons.set(action.id, known);
      this.element.append(known.made);
    }
    known.action = action;
    setText(known.made, action.label);
    setAttribute(known.made, 'aria-label', action.name);
    setAttribute(known.made, 'class', action.isMain ? 'main' : null);
  }
}

/**
 * A switch with a label and a description in smaller type.
 * @param {string} label
 * @param {string | null} description
 * @param {(isOn: boolean) => void} changed
 */
export function switchControl(label, description, changed) {
  const id = uniqueId();
  const input = element('input', {
    id,
    type: 'checkbox',
    role: 'switch',
    class: 'switch',
    'aria-describedby': description ? `${id}-description` : null,
    on: { change: () => changed(input.checked) },
  });
  const words = element('div', { class: 'words' }, element('label', { for: id }, label));
  if (description) {
    words.append(element('p', { id: `${id}-description`, class: 'faint' }, description));
  }
  return {
    element: element('div', { class: 'switch-row' }, words, input),
    /** @param {boolean} isOn */
    update(isOn) {
      if (input.checked !== isOn) input.checked = isOn;
    },
  };
}
