// The dialog for writing a text to send. A draft stays until it is added.

import { words } from '../text/words.js';
import { button } from './controls.js';
import { dialog } from './dialog.js';
import { element } from './dom.js';
import { withCtrl } from './shortcuts.js';

/** @param {(text: string) => Promise<boolean>} add answers whether it was added */
export function textDialog(add) {
  const text = element('textarea', { rows: 7, 'aria-label': words('text.label'), autofocus: true });
  const submit = element(
    'button',
    { class: 'main', title: withCtrl(words('key.enter')) },
    words('text.add'),
  );
  const form = element(
    'form',
    {},
    text,
    element(
      'div',
      { class: 'dialog-actions' },
      button(words('dialog.cancel'), () => made.close()),
      submit,
    ),
  );
  const made = dialog('text-dialog', words('text.title'), form);

  const refresh = () => {
    submit.disabled = text.value.trim() === '';
  };
  text.addEventListener('input', refresh);
  text.addEventListener('keydown', (event) => {
    if (event.key !== 'Enter' || !event.ctrlKey) return;
    event.preventDefault();
    form.requestSubmit();
  });
  form.addEventListener('submit', async (event) => {
    event.preventDefault();
    if (text.value.trim() === '') return;
    made.close();
    if (await add(text.value)) text.value = '';
    refresh();
  });
  refresh();
  return made;
}
