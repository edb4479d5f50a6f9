// A device that announcements do not reach, by its address.

import { words } from '../text/words.js';
import { element, setText, uniqueId } from './dom.js';

/**
 * @param {import('../model/application.js').Application} application
 * @param {(action: () => unknown) => Promise<boolean>} attempt
 */
export function addressPart(application, attempt) {
  const id = uniqueId();
  const address = element('input', {
    id,
    autocomplete: 'off',
    spellcheck: 'false',
    placeholder: '192.168.1.20',
    'aria-describedby': `${id}-description`,
  });
  const find = element('button', {}, words('address.find'));
  const found = element('p', { class: 'faint', role: 'status' });
  const form = element(
    'form',
    { class: 'setting' },
    element('label', { for: id }, words('address.title')),
    element('p', { id: `${id}-description`, class: 'faint' }, words('address.when')),
    element('div', { class: 'field' }, address, find),
    found,
  );
  const refresh = () => {
    find.disabled = address.value.trim() === '';
  };
  address.addEventListener('input', refresh);
  form.addEventListener('submit', async (event) => {
    event.preventDefault();
    const given = address.value.trim();
    if (given === '') return;
    find.disabled = true;
    setText(found, words('address.finding'));
    const isThere = await attempt(() => application.presence.reach(given));
    setText(found, isThere ? words('address.found') : '');
    refresh();
  });
  refresh();
  return form;
}
