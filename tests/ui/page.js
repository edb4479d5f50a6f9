// The shipped views in this page, on a made-up application, and what a person would find there.

import { FakeApplication } from './fake_application.js';
import { nameOf, shown } from './names.js';
import { mountWindow } from './view/window.js';

export { nameOf, shown };

/** Mounts the window afresh and answers what it shows. */
export function mount(state = {}) {
  const application = new FakeApplication(state);
  mountWindow(document.body, application, { invoke: async () => null, listen: () => {} });
  return application;
}

/** Loads the style sheet that ships. */
export function useStyle() {
  const link = document.createElement('link');
  link.rel = 'stylesheet';
  link.href = 'style.css';
  return new Promise((resolve, reject) => {
    link.onload = resolve;
    link.onerror = reject;
    document.head.append(link);
  });
}

/** The one control of that name that can be seen. */
export function control(name, root = document) {
  const found = shown(root).filter((element) => nameOf(element) === name);
  if (found.length !== 1)
    throw new Error(`${found.length} controls are called “${name}”: ${shown(root).map(nameOf)}`);
  return found[0];
}

/** Until what was begun by a click or an event has been shown. */
export const settled = () => new Promise((resolve) => setTimeout(resolve));
