// What the window says, in English. The other languages have the same keys and placeholders.
//
// A message is a text with {placeholders}, or one text for each plural form of {count}. An item is
// what a person chose, a folder counts as one; files are always those inside something.

import { developerConsole } from './en/developer_console.js';
import { ends } from './en/ends.js';
import { general } from './en/general.js';
import { sending } from './en/sending.js';
import { settings } from './en/settings.js';
import { transfers } from './en/transfers.js';

/** @typedef {string | { one?: string, few?: string, many?: string, other: string }} Message */

export const en = {
  ...general,
  ...sending,
  ...transfers,
  ...ends,
  ...settings,
  ...developerConsole,
};
