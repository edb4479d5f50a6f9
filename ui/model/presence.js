// This device on the network: whether others see it, under which name, and why it cannot be reached.

import { words } from '../text/words.js';

/** Dispatches “change” when `problem` is replaced. */
export class Presence extends EventTarget {
  #party;
  #devices;
  #endpoint;
  #canUseNetwork;

  /** Why the network cannot be used. @type {string | null} */
  problem;

  /**
   * @param {import('../protocol/handshake.js').Party} party
   * @param {import('./devices.js').Devices} devices
   * @param {import('../protocol/endpoint.js').Endpoint} endpoint
   * @param {string | null} problem why the network is not to be used
   */
  constructor(party, devices, endpoint, problem) {
    super();
    this.#party = party;
    this.#devices = devices;
    this.#endpoint = endpoint;
    this.#canUseNetwork = problem === null;
    this.problem = problem;
    devices.addEventListener('change', () => {
      const none = words('network.none');
      if (devices.hasNetwork === (this.problem === none))
        this.#setProblem(devices.hasNetwork ? null : none);
    });
  }

  /**
   * Begins to use the network. Never rejects.
   * @param {boolean} isVisible
   */
  async start(isVisible) {
    if (!this.#canUseNetwork) return;
    try {
      await this.#devices.start();
      await this.show(isVisible);
      this.#setProblem(null);
    } catch (error) {
      const why = error instanceof Error ? error.message : String(error);
      this.#setProblem(words('network.failed', { why }));
    }
  }

  /** Looks for devices again, on the networks that there are now. */
  recover() {
    if (this.#canUseNetwork) this.#devices.recover();
  }

  /**
   * Looks for a device where announcements do not get through.
   * @param {string} address with “:” and a port where it is not the usual one
   */
  reach(address) {
    return this.#devices.reach(address);
  }

  /**
   * Lets other devices see this one and call it, or neither.
   * @param {boolean} isVisible
   */
  async show(isVisible) {
    if (!this.#canUseNetwork) return;
    if (isVisible) {
      await this.#devices.announceAt(await this.#endpoint.open());
    } else {
      await this.#devices.announceAt(0);
      await this.#endpoint.close();
    }
  }

  /**
   * @param {string} name
   * @param {boolean} isVisible
   */
  async rename(name, isVisible) {
    this.#party.name = name;
    if (isVisible) await this.show(true);
  }

  /** @param {string | null} problem */
  #setProblem(problem) {
    this.problem = problem;
    this.dispatchEvent(new Event('change'));
  }
}
