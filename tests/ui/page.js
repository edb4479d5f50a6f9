// The shipped views in this page, on a made-up application, and what a person would find there.

import { FakeApplication } from './fake_application.js';
import { mountWindow } from './ui/view/window.js';

/** Mounts the window afresh. */
export function mount(state = {}) {
  const application = new FakeApplication(state);
  const events = [];
  const host = {
    invoke: async (method, args) => ({ method, args }),
    listen: (heard) => events.push(heard),
  };
  mountWindow(document.body, /** @type {any} */ (application), host);
  return {
    application,
    host,
    sendEvent: (name, args) => events.forEach((heard) => heard(name, args)),
  };
}

/** Loads the style sheet that ships. */
export function useStyle() {
  const link = document.createElement('link');
  link.rel = 'stylesheet';
  link.href = 'ui/style.css';
  return new Promise((resolve, reject) => {
    link.onload = resolve;
    link.onerror = reject;
    document.head.append(link);
  });
}

const textOf = (element) => element?.textContent.replace(/\s+/g, ' ').trim() ?? '';

/** What an element is called, by the order of accessible names. */
export function nameOf(element) {
  const by = element.getAttribute('aria-labelledby');
  if (by)
    return by
      .split(' ')
      .map((id) => textOf(document.getElementById(id)))
      .join(' ');
  return element.getAttribute('aria-label') || textOf(element.labels?.[0]) || textOf(element);
}

const CONTROLS =
  'button, input, textarea, progress, [role=switch], section, dialog, [tabindex="0"]';

export const shown = (root = document) =>
  [...root.querySelectorAll(CONTROLS)].filter((element) => element.checkVisibility());

/** The one control of that name that can be seen. */
export function control(name, root = document) {
  const found = shown(root).filter((element) => nameOf(element) === name);
  if (found.length !== 1)
    throw new Error(`${found.length} controls are called “${name}”: ${shown(root).map(nameOf)}`);
  return found[0];
}

/** Until what was begun by a click or an event has been shown. */
export const settled = () => new Promise((resolve) => setTimeout(resolve));
