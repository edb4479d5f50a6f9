// The row of one transfer.

import { hasEnded } from '../model/transfer_states.js';
import { ActionRow, iconButton } from './controls.js';
import { element, setAttribute, setShown, setText, showText } from './dom.js';
import { isolated } from '../text/foreign_text.js';
import { whenText } from '../text/format.js';
import { words } from '../text/words.js';
import { icon, iconOf } from './icons.js';
import { showPreview } from './preview.js';
import { contentsPart } from './contents_part.js';
import { actionsOf, removalOf } from './transfer_actions.js';
import { codePart, progressPart, textPart } from './transfer_parts.js';
import { factsText, statusText } from './transfer_words.js';

/** @typedef {import('../model/types.js').Transfer} Transfer */

/** @param {Transfer} transfer */
function pictureOf({ state, contents, direction }) {
  if (state === 'failed') return 'warning';
  if (contents.length === 1) return iconOf(contents[0]);
  return direction === 'send' ? 'send' : 'receive';
}

/**
 * @param {import('../model/application.js').Application} application
 * @param {(action: () => unknown) => Promise<boolean>} attempt
 * @returns {import('./keyed_list.js').Row<Transfer>}
 */
export function transferRow(application, attempt) {
  /** @type {import('./controls.js').Action | null} */
  let removal = null;
  /** @type {(() => void) | null} */
  let dropPreview = null;
  let picture = '';
  const frame = element('div', { class: 'picture' });
  const title = element('span', { class: 'title', dir: 'auto' });
  const status = element('span', { class: 'status' });
  const facts = element('span', { class: 'faint facts' });
  const time = element('time', { class: 'faint' });
  const remove = iconButton('bin', '', () => attempt(() => removal?.run()));
  const actions = new ActionRow();
  const parts = [codePart(), contentsPart(application, attempt), textPart(), progressPart()];
  const row = element(
    'li',
    { class: 'transfer', tabindex: -1 },
    frame,
    element(
      'div',
      { class: 'words' },
      title,
      status,
      ...parts.map((part) => part.element),
      facts,
      actions.element,
    ),
    time,
    remove,
  );

  /** @param {Transfer} transfer */
  const updatePicture = (transfer) => {
    const wanted = pictureOf(transfer);
    if (wanted !== picture && !dropPreview) frame.replaceChildren(icon(wanted));
    picture = wanted;
    if (dropPreview || transfer.state !== 'complete' || transfer.locations.length === 0) return;
    dropPreview = showPreview(frame, (side) => application.history.preview(transfer.id, side));
  };

  return {
    element: row,
    update(transfer) {
      const { name, state, when } = transfer;
      setAttribute(row, 'data-state', state);
      setAttribute(
        row,
        'aria-label',
        words('status.row', { name: isolated(name), status: statusText(transfer) }),
      );
      setText(title, name);
      setAttribute(title, 'title', name);
      setText(status, statusText(transfer));
      showText(facts, factsText(transfer));
      setShown(time, hasEnded(transfer));
      setAttribute(time, 'datetime', new Date(when).toISOString());
      setText(time, whenText(when, Date.now()));
      for (const part of parts) part.update(transfer);
      updatePicture(transfer);
      actions.update(
        actionsOf(transfer, application).map((action) => ({
          ...action,
          run: async () => {
            if (await attempt(action.run)) actions.showDone(action);
          },
        })),
      );
      removal = removalOf(transfer, application);
      setShown(remove, removal !== null);
      setAttribute(remove, 'aria-label', removal?.name);
      setAttribute(remove, 'title', removal?.label);
    },
    remove: () => dropPreview?.(),
  };
}
