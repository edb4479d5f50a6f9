// The hint that is shown while something is dragged over the window. It does not cover the devices, since a
// drop on one sends to it.

import { isolated } from '../text/foreign_text.js';
import { words } from '../text/words.js';
import { element, setShown, setText } from './dom.js';
import { icon } from './icons.js';

/** @param {import('../model/application.js').Application} application */
export function dropHint(application) {
  const text = element('p');
  const folders = element('p', { class: 'faint' }, words('drop.noFolders'));
  const plus = element('span', {}, icon('add'));
  const hint = element(
    'div',
    { class: 'drop-hint', role: 'status', hidden: true },
    element('div', {}, plus, element('div', {}, text, folders)),
  );
  const update = () => {
    const { drag } = application;
    setShown(hint, drag !== null);
    if (!drag) return;
    const id = drag.hasFiles ? application.dropping.deviceAt(drag) : null;
    const device = application.devices.find((one) => one.id === id);
    hint.classList.toggle('refuses', !drag.hasFiles);
    for (const part of [plus, text]) setShown(part, drag.hasFiles);
    setText(
      text,
      device ? words('drop.onDevice', { device: isolated(device.name) }) : words('drop.here'),
    );
    setShown(folders, drag.folders.length > 0 || !drag.hasFiles);
  };
  application.addEventListener('drag', update);
  update();
  return hint;
}
