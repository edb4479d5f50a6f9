// Which devices are known by which key. A device's key is kept at the first contact, once both
// persons have compared the code; from then on another key is not taken for the same device.

import { hex } from '../protocol/bytes.js';
import { distinctName } from './namesakes.js';
import { fittingValues, isRecord, isText } from './schema.js';

const DOCUMENT = 'trusted-devices';

/** @typedef {import('./documents.js').Documents} Documents */
/** @typedef {{ key: string, name: string }} Pin */

/** Dispatches “change”. */
export class Trust extends EventTarget {
  #documents;
  /** @type {Map<string, Pin>} by identity */
  #pins;
  /** @type {Map<string, string>} new keys that the person agreed to meet, by identity */
  #agreed = new Map();

  /**
   * @param {Documents} documents
   * @param {Map<string, Pin>} pins
   */
  constructor(documents, pins) {
    super();
    this.#documents = documents;
    this.#pins = pins;
  }

  /** @param {Documents} documents */
  static async load(documents) {
    const isPin = isRecord({ key: isText, name: isText });
    const pins = await documents.load(DOCUMENT, (content) =>
      fittingValues(
        DOCUMENT,
        content,
        Object.fromEntries(Object.keys(content ?? {}).map((id) => [id, isPin])),
      ),
    );
    return new Trust(documents, new Map(Object.entries(pins ?? {})));
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
   * What to call a device: the name that was kept with its key. A device that is not known never has
   * the name of a known one alone.
   * @param {{ id: string, key: Uint8Array, name: string }} device
   */
  nameOf({ id, key, name }) {
    if (this.of(id, key) === 'trusted') return this.#pins.get(id)?.name ?? name;
    return distinctName({ key: hex(key), name }, this.known);
  }

  /**
   * Resolves once it will outlast a restart.
   * @param {string} id
   * @param {Uint8Array} key
   * @param {string} name
   */
  async pin(id, key, name) {
    const before = this.#pins.get(id);
    if (before?.key === hex(key) && before.name === name) return;
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

  /** The devices whose keys are kept, near or not.
   *  @returns {{ id: string, key: string, name: string }[]} */
  get known() {
    return [...this.#pins].map(([id, { key, name }]) => ({ id, key, name }));
  }

  /**
   * Forgets one key. Another device that uses the same identity is not affected.
   * @param {string} key in hexadecimal
   */
  async forget(key) {
    for (const [id, pin] of this.#pins) if (pin.key === key) this.#pins.delete(id);
    for (const [id, agreed] of this.#agreed) if (agreed === key) this.#agreed.delete(id);
    await this.#save();
  }

  #save() {
    this.dispatchEvent(new Event('change'));
    return this.#documents.save(DOCUMENT, Object.fromEntries(this.#pins));
  }
}
