// What can be done with a transfer as it stands.

import { isFinished } from './transfer_words.js';

/** @typedef {import('../model/application.js').Application} Application */
/** @typedef {import('../model/types.js').Transfer} Transfer */
/** @typedef {import('./controls.js').Action} Action */

/**
 * @param {Transfer} transfer
 * @param {Application} application
 * @returns {Action[]}
 */
export function actionsOf(
  { id, state, direction, name, deviceName, locations, text },
  application,
) {
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
  if (direction === 'send') {
    return isFinished({ state }) && state !== 'complete'
      ? [
          {
            id: 'retry',
            label: 'Try again',
            name: `Try again to send ${name}`,
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
 * The way out: cancelling what runs, taking what is over off the list. None where an answer is due.
 * @param {Transfer} transfer
 * @param {Application} application
 * @returns {Action | null}
 */
export function dismissalOf({ id, state, direction, name }, application) {
  if (isFinished({ state })) {
    return {
      id: 'remove',
      label: 'Remove from the list',
      name: `Remove ${name} from the list`,
      run: () => application.removeTransfer(id),
    };
  }
  if (state === 'confirming' || (state === 'asking' && direction === 'receive')) return null;
  return {
    id: 'cancel',
    label: 'Cancel',
    name: `Cancel ${name}`,
    run: () => application.cancel(id),
  };
}
