// The actions that a transfer offers in each state.

import { isolated } from '../text/foreign_text.js';
import { canRetry, hasEnded, needsAnswer } from '../model/transfer_states.js';

/** @typedef {import('../model/application.js').Application} Application */
/** @typedef {import('../model/types.js').Transfer} Transfer */
/** @typedef {import('./controls.js').Action} Action */

/**
 * @param {Transfer} transfer
 * @param {Application} application
 * @returns {Action[]}
 */
export function actionsOf(transfer, application) {
  const { id, state, direction, locations, text } = transfer;
  const name = isolated(transfer.name);
  const deviceName = isolated(transfer.deviceName);
  if (state === 'confirming') {
    return [
      {
        id: 'match',
        label: 'They match',
        isMain: true,
        run: () => application.confirmCode(id, true),
      },
      { id: 'differ', label: 'They differ', run: () => application.confirmCode(id, false) },
    ];
  }
  if (state === 'asking' && direction === 'receive') {
    return [
      {
        id: 'accept',
        label: 'Accept',
        name: `Accept ${name} from ${deviceName}`,
        isMain: true,
        run: () => application.accept(id),
      },
      {
        id: 'decline',
        label: 'Decline',
        name: `Decline ${name} from ${deviceName}`,
        run: () => application.decline(id),
      },
    ];
  }
  if (state === 'active') {
    return [
      { id: 'pause', label: 'Pause', name: `Pause ${name}`, run: () => application.pause(id) },
    ];
  }
  if (direction === 'send') {
    return canRetry({ state, direction })
      ? [
          {
            id: 'retry',
            label: state === 'paused' ? 'Resume' : 'Try again',
            name: state === 'paused' ? `Resume ${name}` : `Try again to send ${name}`,
            run: () => application.retry(id),
          },
        ]
      : [];
  }
  if (state !== 'complete') return [];
  /** @type {Action[]} */
  const actions = [];
  if (text !== null) {
    actions.push({
      id: 'copy',
      label: 'Copy',
      name: 'Copy the received text',
      done: 'Copied',
      run: () => application.copyText(id),
    });
  }
  if (locations.length > 0) {
    actions.push(
      { id: 'open', label: 'Open', name: `Open ${name}`, run: () => application.open(id) },
      {
        id: 'reveal',
        label: 'Show in folder',
        name: `Show ${name} in its folder`,
        run: () => application.reveal(id),
      },
    );
  }
  return actions;
}

/**
 * Cancels a running transfer, or removes an ended one from the list. None while an answer is due.
 * @param {Transfer} transfer
 * @param {Application} application
 * @returns {Action | null}
 */
export function dismissalOf({ id, state, direction, name: bareName }, application) {
  const name = isolated(bareName);
  if (hasEnded({ state })) {
    return {
      id: 'remove',
      label: 'Remove from the list',
      name: `Remove ${name} from the list`,
      run: () => application.removeTransfer(id),
    };
  }
  if (needsAnswer({ state, direction })) return null;
  return {
    id: 'cancel',
    label: 'Cancel',
    name: `Cancel ${name}`,
    run: () => application.cancel(id),
  };
}
