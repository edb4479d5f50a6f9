// The dialog that says what this program is.

import { words } from '../text/words.js';
import { dialog } from './dialog.js';
import { element } from './dom.js';

/** @param {import('../model/application.js').Application} application */
export function aboutDialog({ self }) {
  return dialog(
    'about-dialog',
    words('about.title'),
    element('p', {}, words('about.what')),
    element('p', {}, words('about.version', { version: self.version })),
    element(
      'dl',
      { class: 'about' },
      element('dt', {}, words('about.fingerprint')),
      element('dd', {}, element('code', { class: 'fingerprint' }, self.fingerprint)),
    ),
  );
}
