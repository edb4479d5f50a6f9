// What the window asks of the program as a whole.

import { askToClose, closeWindow, openHelp, paste, quit } from '../engine/application.js';
import { currentLanguage } from '../text/locale.js';

export const program = {
  /** Has the host share what is on the clipboard. */
  paste,
  /** Ends the program, whatever it does. */
  quit,
  closeWindow,
  /** Closes the window as its frame's button does. */
  askToClose,
  openHelp: () => openHelp(currentLanguage()),
};
