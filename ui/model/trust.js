// Which devices are known by which key. A device's key is kept at the first contact, once both
// persons have compared the code; from then on another key is not taken for the same device.

import { hex } from '../protocol/bytes.js';

const DOCUMENT = 'trusted-devices';

/** @typedef {import('./storage.js').Storage} Storage */
/** @typedef {{ key: string, name: string }} Pin */

/** Dispatches “change”. */
export class Trust extends EventTarget {
  #storage;
  /** @type {Map<string, Pin>} by identity */
  #pins;
  /** @type {Map<string, string>} new keys that the person agreed to meet, by identity */
  #agreed = new Map();

  /**
   * @param {Storage} storage
   * @param {Map<string, Pin>} pins
   */
  constructor(storage, pins) {
    super();
    this.#storage = storage;
    this.#pins = pins;
  }

  /** @param {Storage} storage */
  static async load(storage) {
    const stored = await storage.load(DOCUMENT);
    const isPin = (/** @type {any} */ pin) => typeof pin?.key === 'string' && typeof pin?.name === 'string';
    const pins = Object.entries(stored ?? {}).filter(([, pin]) => isPin(pin));
    return new Trust(storage, new Map(pins));
  }

  /**
   * @param {string} id
   * @param {Uint8Array} key
   * @returns {'new' | 'trusted' | 'changed'}
   */
  of(id, key) {
    const pin = this.#pins.get(id);
    const given = hex(key);
    if (!pin) return 'new';
    if (pin.key === given) return 'trusted';
    return this.#agreed.get(id) === given ? 'new' : 'changed';
  }

  /**
   * Resolves once it will outlast a restart.
   * @param {string} id
   * @param {Uint8Array} key
   * @param {string} name
   */
  async pin(id, key, name) {
    this.#pins.set(id, { key: hex(key), name });
    this.#agreed.delete(id);
    await this.#save();
  }

  /**
   * Meets a device with another key than before as if it were new: with a code to compare.
   * @param {string} id
   * @param {Uint8Array} key
   */
  agree(id, key) {
    this.#agreed.set(id, hex(key));
    this.dispatchEvent(new Event('change'));
  }

  /** @param {string} id */
  async forget(id) {
    this.#pins.delete(id);
    this.#agreed.delete(id);
    await this.#save();
  }

  #save() {
    this.dispatchEvent(new Event('change'));
    return this.#storage.save(DOCUMENT, Object.fromEntries(this.#pins));
  }
}
