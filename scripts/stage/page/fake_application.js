// An application without devices, network or host: made-up state that a test replaces as it likes, and a
// record of what the views asked for.

import { FINGERPRINT, SETTINGS } from './sample_state.js';

const ACTIONS = [
  'pickFiles',
  'pickFolder',
  'addText',
  'removeItem',
  'clearOutbox',
  'send',
  'confirmCode',
  'accept',
  'decline',
  'cancel',
  'pause',
  'retry',
  'reach',
  'removeTransfer',
  'clearRecents',
  'open',
  'reveal',
  'copyText',
  'agreeToNewKey',
  'forgetDevice',
  'openReceiveFolder',
  'openFormerFolder',
  'acceptUpTo',
  'requestNotifications',
  'takeSuggestion',
  'dismissSuggestion',
  'paste',
  'openHelp',
  'askToClose',
  'closeWindow',
  'quit',
];

export class FakeApplication extends EventTarget {
  self = { name: 'Kitchen computer', fingerprint: FINGERPRINT, version: '1.0.0 (build 42)' };
  devices = [];
  outbox = [];
  transfers = [];
  drag = null;
  suggestion = null;
  problem = null;
  damage = null;
  knownDevices = [];
  settings = SETTINGS;

  /** What was asked for, in order: [name, ...arguments]. */
  calls = [];
  /** Why the next action fails; null where it does not. */
  nextFailure = null;
  /** What preview() answers. */
  picture = null;

  constructor(state) {
    super();
    Object.assign(this, state);
    for (const name of ACTIONS) this[name] = (...given) => this.#act(name, given);
  }

  /** Replaces state and tells of it. */
  change(state) {
    Object.assign(this, state);
    for (const name of Object.keys(state)) {
      this.dispatchEvent(new CustomEvent(name));
    }
  }

  async changeSettings(partial) {
    await this.#act('changeSettings', [partial]);
    this.change({ settings: { ...this.settings, ...partial } });
  }

  async preview() {
    return this.picture;
  }

  async itemPreview() {
    return null;
  }

  async #act(name, given) {
    this.calls.push([name, ...given]);
    const message = this.nextFailure;
    this.nextFailure = null;
    if (message) throw new Error(message);
  }
}
