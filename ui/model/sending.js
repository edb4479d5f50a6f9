// Sends items to devices, and again what did not arrive.

import { words } from '../text/words.js';
import { contentFields } from './contents.js';

/** @typedef {import('./types.js').Item} Item */

export class Sending {
  #transfers;
  #trust;
  #outbox;
  #devices;
  #connect;
  #courier;

  /**
   * @param {object} given
   * @param {import('./transfers.js').Transfers} given.transfers
   * @param {import('./trust.js').Trust} given.trust
   * @param {import('./outbox.js').Outbox} given.outbox
   * @param {import('./devices.js').Devices} given.devices
   * @param {import('../protocol/endpoint.js').Endpoint} given.endpoint
   * @param {import('./courier.js').Courier} given.courier
   */
  constructor({ transfers, trust, outbox, devices, endpoint, courier }) {
    this.#transfers = transfers;
    this.#trust = trust;
    this.#outbox = outbox;
    this.#devices = devices;
    this.#connect = endpoint.connect.bind(endpoint);
    this.#courier = courier;
  }

  /**
   * Sends the outbox to each of the devices.
   * @param {string[]} deviceIds
   */
  async send(deviceIds) {
    let items, fields;
    do {
      items = this.#outbox.items;
      if (items.length === 0) throw new Error(words('send.nothing'));
      fields = await contentFields(items);
    } while (items !== this.#outbox.items); // more may be added meanwhile
    const neighbours = deviceIds.map((id) => this.#devices.neighbour(id));
    // The transfers' document has the items before the outbox loses them.
    for (const neighbour of neighbours) this.#sendTo(neighbour, items, fields);
    this.#outbox.takeAll();
  }

  /**
   * Sends items that never were in the outbox. Rejects where the device is no longer near.
   * @param {string} deviceId
   * @param {Item[]} items
   */
  async sendOnly(deviceId, items) {
    const fields = await contentFields(items);
    this.#sendTo(this.#devices.neighbour(deviceId), items, fields);
  }

  /**
   * Sends again what has not arrived; the receiver goes on where it ended.
   * @param {string} transferId
   */
  async retry(transferId) {
    const { deviceId, items, number } = this.#transfers.find(transferId);
    const fields = await contentFields(items);
    const neighbour = this.#devices.withIdentity(deviceId);
    this.#transfers.remove(({ id }) => id === transferId);
    this.#sendTo(neighbour, items, fields, number);
  }

  /**
   * @param {import('../protocol/discovery.js').Neighbour} neighbour
   * @param {Item[]} items
   * @param {Awaited<ReturnType<typeof contentFields>>} fields
   * @param {string} [number] of an earlier attempt
   */
  async #sendTo(neighbour, items, fields, number) {
    const transfer = this.#transfers.add({
      direction: 'send',
      deviceId: neighbour.id,
      deviceName: this.#trust.nameOf(neighbour),
      ...fields,
      state: 'connecting',
      items,
      ...(number ? { number } : {}),
    });
    await this.#courier.send(transfer, () => this.#connect(neighbour));
    if (this.#transfers.list.some(({ id, state }) => id === transfer.id && state === 'complete')) {
      this.#transfers.change(transfer.id, { items: [] });
      await this.#outbox.release(items);
    }
  }
}
