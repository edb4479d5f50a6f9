// Starts the application and shows it.

import { appearance, listenToEngine, locale } from './engine/application.js';
import { startApplication } from './model/start.js';
import { invoke, platformEvents } from './platform.js';
import { speak } from './text/words.js';
import { followAppearance } from './view/appearance.js';
import { errorText } from './view/notices.js';
import { mountWindow, showStartFailure } from './view/window.js';

const EVENTS = ['sharedEntries', 'filesDropped', 'dragActiveChanged', 'discoveryRecoveryRequested'];

/** The engine's languages, used where the host does not answer. */
const ofTheEngine = () => ({
  languages: [...navigator.languages],
  time: navigator.language,
  numbers: navigator.language,
});

try {
  speak(await locale().catch(ofTheEngine));
  const show = followAppearance();
  appearance().then(show, () => {});
  const application = await startApplication();
  const { closeAsked } = mountWindow(document.body, application, {
    invoke,
    listen(heard) {
      for (const name of EVENTS) {
        platformEvents.addEventListener(name, (event) =>
          heard(name, /** @type {CustomEvent} */ (event).detail),
        );
      }
    },
  });
  /** @type {Record<string, (detail: any) => void>} */
  const heard = {
    appearanceChanged: show,
    closeAsked,
    dragMoved: (drag) => application.dropping.moved(drag),
    dragLeft: () => application.dropping.left(),
    dropped: (drag) => application.dropping.dropped(drag),
  };
  listenToEngine((event, detail) => heard[event]?.(detail));
} catch (error) {
  console.error(error);
  showStartFailure(document.body, errorText(error));
}
