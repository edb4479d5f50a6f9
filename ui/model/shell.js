// Keeps the status menu and the background mode up to date.

import { setNeedsAttention } from '../engine/application.js';
import { Float64, platform } from '../platform.js';
import { isolated } from '../text/foreign_text.js';
import { percentText } from '../text/format.js';
import { isKey, words } from '../text/words.js';
import { hasEnded, needsAnswer } from './transfer_states.js';

/** @typedef {import('./types.js').Transfer} Transfer */

const RECENT = 5;

/** @param {Transfer} transfer */
const title = ({ direction, deviceName }) =>
  words(direction === 'send' ? 'status.to' : 'status.from', { device: isolated(deviceName) });

/** @param {Transfer} transfer */
function progressLabel(transfer) {
  const key = `menuState.${transfer.state}`;
  return isKey(key) ? words(key) : percentText(fraction(transfer));
}

/** @param {Transfer} transfer */
function fraction({ state, bytesDone, bytesTotal }) {
  if (state === 'complete') return 1;
  return bytesTotal > 0 ? bytesDone / bytesTotal : 0;
}

/** @param {Transfer} transfer */
const snapshot = (transfer) => ({
  title: title(transfer),
  item: transfer.name,
  stateKey: transfer.state === 'declined' ? 'cancelled' : transfer.state,
  progressLabel: progressLabel(transfer),
  progress: new Float64(fraction(transfer)),
});

export class Shell {
  #lastShell = '';
  #lastMode = '';
  #neededAttention = false;

  /** Declares the background mode again with the next update, since showing the window has ended it. */
  modeWasReset() {
    this.#lastMode = '';
  }

  /**
   * @param {boolean} visible
   * @param {Transfer[]} transfers unfinished first
   */
  update(visible, transfers) {
    const unfinished = transfers.filter((transfer) => !hasEnded(transfer));
    const recent = transfers.filter(hasEnded).slice(0, RECENT);
    const active = unfinished.find(({ state }) => state === 'active') ?? unfinished[0];
    const shell = {
      visible,
      activeTransfer: active ? snapshot(active) : null,
      recentTransfers: recent.map(snapshot),
    };
    const mode = {
      enabled: visible || unfinished.length > 0,
      transferInProgress: unfinished.some(({ state }) => state === 'active'),
    };
    const shellText = JSON.stringify(shell);
    const modeText = JSON.stringify(mode);
    if (shellText !== this.#lastShell) platform.updateDesktopShell(shell).catch(() => {});
    if (modeText !== this.#lastMode) platform.setBackgroundMode(mode).catch(() => {});
    const needsAttention = transfers.some(needsAnswer);
    if (needsAttention !== this.#neededAttention) setNeedsAttention(needsAttention).catch(() => {});
    this.#neededAttention = needsAttention;
    this.#lastShell = shellText;
    this.#lastMode = modeText;
  }
}
