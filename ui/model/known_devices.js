// The devices whose keys are kept, as the person sees and manages them.

import { fingerprintOf, unhex } from '../protocol/bytes.js';
import { isolated } from '../text/foreign_text.js';
import { byName } from '../text/locale.js';
import { words } from '../text/words.js';

/** Dispatches “change” when `list` is replaced. */
export class KnownDevices extends EventTarget {
  #trust;
  #devices;
  #suggestions;

  /** By name. @type {import('./types.js').KnownDevice[]} */
  list = [];

  /**
   * @param {import('./trust.js').Trust} trust
   * @param {import('./devices.js').Devices} devices
   * @param {import('./suggestions.js').Suggestions} suggestions
   */
  constructor(trust, devices, suggestions) {
    super();
    this.#trust = trust;
    this.#devices = devices;
    this.#suggestions = suggestions;
    for (const source of [trust, devices]) source.addEventListener('change', () => this.refresh());
  }

  async refresh() {
    const known = await Promise.all(
      this.#trust.known.map(async ({ key, name, since = 0, seen = 0, acceptsUpTo = 0 }) => ({
        key,
        name,
        since,
        seen,
        acceptsUpTo,
        isNear: this.#devices.list.some((one) => one.key === key && one.trust === 'trusted'),
        fingerprint: await fingerprintOf(unhex(key, key.length / 2) ?? new Uint8Array()),
      })),
    );
    this.list = known.sort((left, right) => byName(left.name, right.name));
    this.dispatchEvent(new Event('change'));
  }

  /**
   * Meets a device whose key has changed as if it were new.
   * @param {string} deviceId
   */
  async agreeToNewKey(deviceId) {
    const { id, key } = this.#devices.neighbour(deviceId);
    this.#trust.agree(id, key);
  }

  /**
   * Forgets one device's key, whether the device is near or not, and offers to know it again.
   * @param {string} key in hexadecimal, of a Device or a KnownDevice
   */
  async forget(key) {
    const device = isolated(this.#trust.known.find((one) => one.key === key)?.name ?? '');
    const knowAgain = await this.#trust.forget(key);
    this.#suggestions.offer({
      text: words('device.forgotten', { device }),
      label: words('notices.undo'),
      run: knowAgain,
    });
  }

  /**
   * Accepts offers of a known device without a question, up to a size.
   * @param {string} key of a KnownDevice
   * @param {number} bytes 0 for never
   */
  acceptUpTo(key, bytes) {
    return this.#trust.acceptUpTo(key, bytes);
  }
}
