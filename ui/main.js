// Starts the application and shows it.

import { startApplication } from './model/start.js';
import { invoke, platformEvents } from './platform.js';
import { errorText } from './view/notices.js';
import { mountWindow, showStartFailure } from './view/window.js';

const EVENTS = ['sharedEntries', 'filesDropped', 'dragActiveChanged', 'discoveryRecoveryRequested'];

try {
  const application = await startApplication();
  mountWindow(document.body, application, {
    invoke,
    listen(heard) {
      for (const name of EVENTS) {
        platformEvents.addEventListener(name, (event) =>
          heard(name, /** @type {CustomEvent} */ (event).detail),
        );
      }
    },
  });
} catch (error) {
  console.error(error);
  showStartFailure(document.body, errorText(error));
}
