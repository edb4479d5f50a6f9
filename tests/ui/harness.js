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

/** Waits for a condition; throws what did not happen in time. */
export async function until(holds, what) {
  const deadline = performance.now() + 10_000;
  while (!holds()) {
    if (performance.now() > deadline) throw new Error(`This did not happen: ${what}.`);
    await new Promise((resolve) => setTimeout(resolve, 50));
  }
}

/** Until what has just come in takes clicks. */
export const answerable = () =>
  until(() => !document.querySelector('[inert]'), 'everything takes clicks');

export function equal(actual, expected) {
  const [one, other] = [JSON.stringify(actual), JSON.stringify(expected)];
  if (one !== other) throw new Error(`${one} is not ${other}`);
}
