// The row of one transfer.

import { hasEnded } from '../model/transfer_states.js';
import { ActionRow, iconButton } from './controls.js';
import { element, setAttribute, setShown, setText, showText } from './dom.js';
import { isolated } from '../text/foreign_text.js';
import { whenText } from '../text/format.js';
import { icon } from './icons.js';
import { showPreview } from './preview.js';
import { actionsOf, dismissalOf } from './transfer_actions.js';
import { codePart, offerPart, progressPart, textPart } from './transfer_parts.js';
import { factsText, statusText } from './transfer_words.js';

/** @typedef {import('../model/types.js').Transfer} Transfer */

/** @param {Transfer} transfer */
function pictureOf({ state, text, name, direction, locations }) {
  if (state === 'failed') return 'warning';
  if ((text !== null && locations.length === 0) || name === 'Text') return 'text';
  return direction === 'send' ? 'send' : 'receive';
}

/**
 * @param {import('../model/application.js').Application} application
 * @param {(action: () => unknown) => Promise<boolean>} attempt
 * @returns {import('./keyed_list.js').Row<Transfer>}
 */
export function transferRow(application, attempt) {
  /** @type {import('./controls.js').Action | null} */
  let dismissal = null;
  /** @type {(() => void) | null} */
  let dropPreview = null;
  let picture = '';
  const frame = element('div', { class: 'picture' });
  const title = element('span', { class: 'title' });
  const status = element('span', { class: 'status' });
  const facts = element('span', { class: 'faint facts' });
  const time = element('time', { class: 'faint' });
  const dismiss = iconButton('close', '', () => attempt(() => dismissal?.run()));
  const actions = new ActionRow();
  const parts = [codePart(), offerPart(), textPart(), progressPart()];
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
    dismiss,
  );

  /** @param {Transfer} transfer */
  const updatePicture = (transfer) => {
    const wanted = pictureOf(transfer);
    if (wanted !== picture && !dropPreview) frame.replaceChildren(icon(wanted));
    picture = wanted;
    if (dropPreview || transfer.state !== 'complete' || transfer.locations.length === 0) return;
    dropPreview = showPreview(frame, (side) => application.preview(transfer.id, side));
  };

  return {
    element: row,
    update(transfer) {
      const { name, state, when } = transfer;
      setAttribute(row, 'data-state', state);
      setAttribute(row, 'aria-label', `${isolated(name)}: ${statusText(transfer)}`);
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
      dismissal = dismissalOf(transfer, application);
      setShown(dismiss, dismissal !== null);
      setAttribute(dismiss, 'aria-label', dismissal?.name);
      setAttribute(dismiss, 'title', dismissal?.label);
    },
    remove: () => dropPreview?.(),
  };
}
