// The actions that a transfer offers in each state.

import { isolated } from '../text/foreign_text.js';
import { words } from '../text/words.js';
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
  if (needsAnswer(transfer)) return answers(transfer, application);
  if (!hasEnded(transfer)) return steering(transfer, application);
  return transfer.direction === 'send'
    ? resumption(transfer, application)
    : uses(transfer, application);
}

/**
 * @param {Transfer} transfer
 * @param {Application} application
 * @returns {Action[]}
 */
function answers(transfer, application) {
  const { id, state } = transfer;
  const names = { name: isolated(transfer.name), device: isolated(transfer.deviceName) };
  if (state === 'confirming') {
    return [
      {
        id: 'match',
        label: words('transfer.match'),
        isMain: true,
        run: () => application.courier.answer(id, true),
      },
      {
        id: 'differ',
        label: words('transfer.differ'),
        run: () => application.courier.answer(id, false),
      },
    ];
  }
  return [
    {
      id: 'accept',
      label: words('transfer.accept'),
      name: words('transfer.acceptNamed', names),
      isMain: true,
      run: () => application.courier.accept(id),
    },
    {
      id: 'decline',
      label: words('transfer.decline'),
      name: words('transfer.declineNamed', names),
      run: () => application.courier.answer(id, false),
    },
  ];
}

/**
 * @param {Transfer} transfer
 * @param {Application} application
 * @returns {Action[]}
 */
function steering({ id, state, name: bareName }, application) {
  const name = isolated(bareName);
  const cancel = {
    id: 'cancel',
    label: words('transfer.cancel'),
    name: words('transfer.cancelNamed', { name }),
    run: () => application.courier.cancel(id),
  };
  if (state !== 'active') return [cancel];
  return [
    {
      id: 'pause',
      label: words('transfer.pause'),
      name: words('transfer.pauseNamed', { name }),
      run: () => application.courier.pause(id),
    },
    cancel,
  ];
}

/**
 * @param {Transfer} transfer
 * @param {Application} application
 * @returns {Action[]}
 */
function resumption(transfer, application) {
  if (!canRetry(transfer)) return [];
  const name = isolated(transfer.name);
  const isPaused = transfer.state === 'paused';
  return [
    {
      id: 'retry',
      label: words(isPaused ? 'transfer.resume' : 'transfer.retry'),
      name: words(isPaused ? 'transfer.resumeNamed' : 'transfer.retryNamed', { name }),
      run: () => application.sending.retry(transfer.id),
    },
  ];
}

/**
 * @param {Transfer} transfer
 * @param {Application} application
 * @returns {Action[]}
 */
function uses({ id, state, text, locations, name: bareName }, application) {
  if (state !== 'complete') return [];
  const name = isolated(bareName);
  /** @type {Action[]} */
  const actions = [];
  if (text !== null) {
    actions.push({
      id: 'copy',
      label: words('transfer.copy'),
      name: words('transfer.copyText'),
      done: words('transfer.copied'),
      run: () => application.history.copyText(id),
    });
  }
  // Of several, each has its own in the opened row.
  if (locations.length === 1) {
    actions.push(
      {
        id: 'open',
        label: words('transfer.open'),
        name: words('transfer.openNamed', { name }),
        run: () => application.history.open(id),
      },
      {
        id: 'reveal',
        label: words('transfer.show'),
        name: words('transfer.showNamed', { name }),
        run: () => application.history.reveal(id),
      },
    );
  }
  return actions;
}

/**
 * Removes an ended transfer from the list.
 * @param {Transfer} transfer
 * @param {Application} application
 * @returns {Action | null}
 */
export function removalOf({ id, state, name }, application) {
  if (!hasEnded({ state })) return null;
  return {
    id: 'remove',
    label: words('transfer.remove'),
    name: words('transfer.removeNamed', { name: isolated(name) }),
    run: () => application.history.remove(id),
  };
}
