// An application without devices, network or host: made-up state that a test replaces as it likes, and a
// record of what the views asked for.

import { INITIAL_SETTINGS } from './model/settings.js';
import { FINGERPRINT } from './sample_state.js';

/** What can be asked of the application itself and of each of its parts. */
const OWN_ACTIONS = ['openReceiveFolder', 'openFormerFolder', 'requestNotifications'];
const ACTIONS = {
  choosing: ['pickFiles', 'pickFolder', 'addText', 'remove', 'clear'],
  sending: ['send', 'retry'],
  courier: ['answer', 'accept', 'cancel', 'pause'],
  history: ['remove', 'clear', 'open', 'reveal', 'copyText'],
  presence: ['reach'],
  known: ['agreeToNewKey', 'forget', 'acceptUpTo'],
  suggestions: ['take', 'dismiss'],
  program: ['paste', 'openHelp', 'askToClose', 'closeWindow', 'quit'],
};

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
  settings = INITIAL_SETTINGS;

  /** What was asked for, in order: [“part.action”, ...arguments]. */
  calls = [];
  /** Why the next action fails; null where it does not. */
  nextFailure = null;
  /** What a preview of something received is. */
  picture = null;
  dropping = { deviceAt: () => null };

  constructor(state) {
    super();
    Object.assign(this, state);
    for (const name of OWN_ACTIONS) this[name] = (...given) => this.#act(name, given);
    for (const [part, names] of Object.entries(ACTIONS)) {
      const actOn = (name) => [name, (...given) => this.#act(`${part}.${name}`, given)];
      this[part] = Object.fromEntries(names.map(actOn));
    }
    this.choosing.preview = async () => null;
    this.history.preview = async () => this.picture;
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

  async #act(name, given) {
    this.calls.push([name, ...given]);
    const message = this.nextFailure;
    this.nextFailure = null;
    if (message) throw new Error(message);
  }
}
