// Which devices are known by which key. A device's key is kept at the first contact, once both
// persons have compared the code; from then on another key is not taken for the same device.

import { hex } from '../protocol/bytes.js';
import { distinctName } from './namesakes.js';
import { fittingValues, isCount, isMissingOr, isRecord, isText } from './schema.js';

const DOCUMENT = 'trusted-devices';

/** @typedef {import('./documents.js').Documents} Documents */
/** How old the kept time of the last contact may get, in milliseconds. */
const SEEN_KEEPS = 3_600_000;

/** `since`, `seen`: in milliseconds since 1970. `acceptsUpTo`: bytes that are accepted without a question.
 *  @typedef {{ key: string, name: string, since?: number, seen?: number,
 *              acceptsUpTo?: number }} Pin */

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
    const isPin = isRecord({
      key: isText,
      name: isText,
      since: isMissingOr(isCount),
      seen: isMissingOr(isCount),
      acceptsUpTo: isMissingOr(isCount),
    });
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
   * The name to show for a device: the one that was kept with its key. An unknown device with the name of a
   * known one is marked as another device.
   * @param {{ id: string, key: Uint8Array, name: string }} device
   */
  nameOf({ id, key, name }) {
    if (this.of(id, key) === 'trusted') return this.#pins.get(id)?.name ?? name;
    return distinctName({ key: hex(key), name }, this.known);
  }

  /**
   * Resolves once the key is saved.
   * @param {string} id
   * @param {Uint8Array} key
   * @param {string} name
   */
  async pin(id, key, name) {
    const before = this.#pins.get(id);
    const now = Date.now();
    const isSame = before?.key === hex(key);
    if (isSame && before.name === name) return this.saw(id, key);
    const kept = isSame ? before : { since: now };
    this.#pins.set(id, { ...kept, key: hex(key), name, seen: now });
    this.#agreed.delete(id);
    await this.#save();
  }

  /**
   * The device has proven its key.
   * @param {string} id
   * @param {Uint8Array} key
   */
  async saw(id, key) {
    const pin = this.#pins.get(id);
    const now = Date.now();
    if (pin?.key !== hex(key) || now - (pin.seen ?? 0) < SEEN_KEEPS) return;
    this.#pins.set(id, { ...pin, seen: now });
    await this.#save().catch(() => {});
  }

  /**
   * Whether a device may send so many bytes without a question.
   * @param {string} id
   * @param {Uint8Array} key
   * @param {number} bytes
   */
  acceptsUnasked(id, key, bytes) {
    const most = this.#pins.get(id)?.acceptsUpTo ?? 0;
    return most > 0 && bytes <= most && this.of(id, key) === 'trusted';
  }

  /**
   * @param {string} key in hexadecimal
   * @param {number} bytes
   */
  async acceptUpTo(key, bytes) {
    for (const [id, pin] of this.#pins) {
      if (pin.key === key) this.#pins.set(id, { ...pin, acceptsUpTo: bytes });
    }
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
   *  @returns {({ id: string } & Pin)[]} */
  get known() {
    return [...this.#pins].map(([id, pin]) => ({ id, ...pin }));
  }

  /**
   * Forgets one key. Another device that uses the same identity is not affected.
   * @param {string} key in hexadecimal
   * @returns {Promise<() => Promise<void>>} knows it again, if nothing else took its place
   */
  async forget(key) {
    const gone = [...this.#pins].filter(([, pin]) => pin.key === key);
    for (const [id] of gone) this.#pins.delete(id);
    for (const [id, agreed] of this.#agreed) if (agreed === key) this.#agreed.delete(id);
    await this.#save();
    return () => {
      for (const [id, pin] of gone) if (!this.#pins.has(id)) this.#pins.set(id, pin);
      return this.#save();
    };
  }

  #save() {
    this.dispatchEvent(new Event('change'));
    return this.#documents.save(DOCUMENT, Object.fromEntries(this.#pins));
  }
}
