// What the checks are made of: the controls that a person would find in the window, and the comparison of
// what is seen with what is expected.

import { nameOf, shown } from './accessible_names.js';
import { mount, settled, useStyle } from './mounted.js';

export { mount, nameOf, settled, shown, useStyle };

/** The one control of that name that can be seen. */
export function control(name, root = document) {
  const found = shown(root).filter((element) => nameOf(element) === name);
  if (found.length !== 1)
    throw new Error(`${found.length} controls are called “${name}”: ${shown(root).map(nameOf)}`);
  return found[0];
}

/** Opens what an entry of the menu opens. */
export function open(entry) {
  document.querySelector('[aria-haspopup=menu]').click();
  const found = [...document.querySelectorAll('[role=menuitem]')];
  found.find((one) => one.firstElementChild.textContent === entry).click();
}

/** Until what has just come in takes clicks. */
export async function answerable() {
  const deadline = performance.now() + 10_000;
  while (document.querySelector('[inert]')) {
    if (performance.now() > deadline) throw new Error('Something takes no clicks.');
    await new Promise((resolve) => setTimeout(resolve, 50));
  }
}

export function equal(actual, expected) {
  const [one, other] = [JSON.stringify(actual), JSON.stringify(expected)];
  if (one !== other) throw new Error(`${one} is not ${other}`);
}
