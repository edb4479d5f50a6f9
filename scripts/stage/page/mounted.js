// The shipped window on a made-up application.

import { FakeApplication } from './fake_application.js';
import { mountWindow } from './view/window.js';

/** Mounts the window afresh and answers the application that it shows. */
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

/** Until what was begun by a click or an event has been shown. */
export const settled = () => new Promise((resolve) => setTimeout(resolve));
