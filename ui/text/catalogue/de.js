// What the window says, in German.

import { developerConsole } from './de/developer_console.js';
import { ends } from './de/ends.js';
import { general } from './de/general.js';
import { sending } from './de/sending.js';
import { settings } from './de/settings.js';
import { transfers } from './de/transfers.js';

/** @type {Record<keyof typeof import('./en.js').en, import('./en.js').Message>} */
export const de = {
  ...general,
  ...sending,
  ...transfers,
  ...ends,
  ...settings,
  ...developerConsole,
};
