// All that the window shows, and all that a person can do.

import { platform } from '../platform.js';
import { fingerprintOf, unhex } from '../protocol/bytes.js';
import { Endpoint } from '../protocol/endpoint.js';
import { discardScratch } from '../protocol/scratch_area.js';
import { Courier } from './courier.js';
import { Devices } from './devices.js';
import { nameOf } from './items.js';
import { Notifications } from './notifications.js';
import { Outbox } from './outbox.js';
import { copyReceivedText, findReceived, firstLocation } from './received.js';
import { changedSettings } from './settings.js';
import { Shell } from './shell.js';
import { hasEnded } from './transfer_states.js';

/** @typedef {import('./types.js').Item} Item */
/** @typedef {import('./types.js').Device} Device */
/** @typedef {import('./types.js').KnownDevice} KnownDevice */
/** @typedef {import('./types.js').Transfer} Transfer */
/** @typedef {import('./types.js').Settings} Settings */

const NO_NETWORK = 'This device is not connected to a network.';

/**
 * What is loaded at the start.
 * @typedef {object} Beginning
 * @property {import('./documents.js').Documents} documents
 * @property {import('./trust.js').Trust} trust
 * @property {import('./transfers.js').Transfers} transfers
 * @property {Settings} settings
 * @property {Item[]} outbox
 * @property {import('../protocol/handshake.js').Party} party
 * @property {{ name: string, fingerprint: string, version: string }} self
 * @property {string | null} damage what could not be read, in one sentence
 * @property {string | null} problem why the network is not to be used
 */

/**
 * Its properties are replaced, never changed; each replacement dispatches an event of the
 * property's name. Actions reject with an Error whose message can be shown.
 */
export class Application extends EventTarget {
  #documents;
  #trust;
  #transfers;
  #outbox;
  #devices;
  #endpoint;
  #courier;
  #shell = new Shell();
  #notifications;
  #canUseNetwork;

  /** @type {Device[]} */
  devices = [];
  /** By name. @type {KnownDevice[]} */
  knownDevices = [];
  /** Why the network cannot be used. @type {string | null} */
  problem;
  isDragOver = false;

  /** @param {Beginning} beginning */
  constructor({ documents, trust, transfers, settings, outbox, party, self, damage, problem }) {
    super();
    this.#documents = documents;
    this.#trust = trust;
    this.#transfers = transfers;
    this.#outbox = new Outbox(documents, outbox, () =>
      transfers.list.flatMap(({ items }) => items),
    );
    this.#courier = new Courier(transfers, trust);
    this.#endpoint = new Endpoint(
      party,
      ({ id, key }) => trust.of(id, key) === 'trusted',
      (contact) => this.#courier.receive(contact),
    );
    this.#devices = new Devices(party, trust, this.#endpoint);
    this.#notifications = new Notifications(transfers.list);
    this.#canUseNetwork = problem === null;
    this.self = self;
    this.settings = settings;
    this.damage = damage;
    this.problem = problem;
    /** What is to be sent next. */
    this.outbox = outbox;
    this.transfers = transfers.list;
    this.#outbox.addEventListener('change', () => this.#set('outbox', this.#outbox.items));
    this.#devices.addEventListener('change', () => {
      this.#set('devices', this.#devices.list);
      const { hasNetwork } = this.#devices;
      if (hasNetwork === (this.problem === NO_NETWORK)) {
        this.#set('problem', hasNetwork ? null : NO_NETWORK);
      }
    });
    trust.addEventListener('change', () => this.#knownDevicesChanged());
    transfers.addEventListener('change', () => this.#transfersChanged());
  }

  /** Begins to use the network, and looks for the files of earlier runs. Never rejects. */
  async begin() {
    await Promise.all([this.#outbox.restore(), this.#knownDevicesChanged()]);
    await findReceived(this.#transfers);
    if (this.#canUseNetwork) await this.#startNetwork();
    this.#transfersChanged();
    // At every start: a desktop's notification service comes and goes.
    this.requestNotifications().catch(() => {});
  }

  /** Looks for devices again, on the networks that there are now. */
  recover() {
    this.#shell.modeWasReset();
    this.#shell.update(this.settings.isVisible, this.transfers);
    if (this.#canUseNetwork) this.#devices.recover();
  }

  /** @param {boolean} isDragOver */
  dragOver(isDragOver) {
    this.#set('isDragOver', isDragOver);
  }

  /** @param {import('../platform.js').SharedEntry[]} entries */
  add(entries) {
    return this.#outbox.add(entries);
  }

  async pickFiles() {
    await this.#outbox.add(await platform.pickFiles());
  }

  async pickFolder() {
    await this.#outbox.add(await platform.pickFolder());
  }

  /** @param {string} text */
  addText(text) {
    return this.#outbox.addText(text);
  }

  /**
   * Removes an item, and with a folder all that is in it.
   * @param {Item} item
   */
  removeItem(item) {
    return this.#outbox.remove(item);
  }

  clearOutbox() {
    return this.#outbox.clear();
  }

  /**
   * Sends the outbox to each of the devices.
   * @param {string[]} deviceIds
   */
  async send(deviceIds) {
    const items = this.outbox;
    if (items.length === 0) throw new Error('There is nothing to send yet.');
    const neighbours = deviceIds.map((id) => this.#devices.neighbour(id));
    // The transfers' document has the items before the outbox loses them.
    for (const neighbour of neighbours) this.#sendTo(neighbour, items);
    this.#outbox.takeAll();
  }

  /**
   * @param {string} transferId
   * @param {boolean} matches
   */
  async confirmCode(transferId, matches) {
    this.#courier.answer(transferId, matches);
  }

  /** @param {string} transferId */
  async accept(transferId) {
    await this.#courier.accept(transferId);
  }

  /** @param {string} transferId */
  async decline(transferId) {
    this.#courier.answer(transferId, false);
  }

  /** @param {string} transferId */
  cancel(transferId) {
    return this.#courier.cancel(transferId);
  }

  /**
   * Ends a transfer so that it can go on later where it was.
   * @param {string} transferId
   */
  pause(transferId) {
    return this.#courier.pause(transferId);
  }

  /**
   * Sends again what has not arrived; the receiver goes on where it ended.
   * @param {string} transferId
   */
  async retry(transferId) {
    const { deviceId, items, number } = this.#transfers.find(transferId);
    const neighbour = this.#devices.withIdentity(deviceId);
    this.#transfers.remove(({ id }) => id === transferId);
    this.#sendTo(neighbour, items, number);
  }

  /**
   * Looks for a device where announcements do not get through.
   * @param {string} address with “:” and a port where it is not the usual one
   */
  async reach(address) {
    await this.#devices.reach(address);
  }

  /** @param {string} transferId */
  async removeTransfer(transferId) {
    const transfer = this.#transfers.find(transferId);
    this.#transfers.remove(({ id }) => id === transferId);
    await this.#letGoOf([transfer]);
  }

  async clearRecents() {
    const ended = this.#transfers.list.filter(hasEnded);
    this.#transfers.remove(() => true);
    await this.#letGoOf(ended);
  }

  /** @param {string} transferId */
  async open(transferId) {
    await platform.openReceivedFile(this.#locationOf(transferId));
  }

  /** @param {string} transferId */
  async reveal(transferId) {
    await platform.revealReceivedFile(this.#locationOf(transferId));
  }

  /** @param {string} transferId */
  async copyText(transferId) {
    await copyReceivedText(this.#transfers.find(transferId));
  }

  /**
   * A PNG of the first thing that was received, or null.
   * @param {string} transferId
   * @param {number} maximumDimension
   */
  async preview(transferId, maximumDimension) {
    return platform.receivedFilePreview(this.#locationOf(transferId), maximumDimension);
  }

  /** @param {string} deviceId */
  async agreeToNewKey(deviceId) {
    const { id, key } = this.#devices.neighbour(deviceId);
    this.#trust.agree(id, key);
  }

  /**
   * Forgets one device's key, whether the device is near or not.
   * @param {string} key in hexadecimal, of a Device or a KnownDevice
   */
  async forgetDevice(key) {
    await this.#trust.forget(key);
  }

  openReceiveFolder() {
    return platform.openReceiveFolder();
  }

  /** @param {Partial<Settings>} change */
  async changeSettings(change) {
    const before = this.settings;
    this.#set('settings', await changedSettings(this.#documents, before, change));
    if (this.settings.isVisible !== before.isVisible) {
      await this.#showSelf(this.settings.isVisible);
      this.#transfersChanged();
    }
  }

  async requestNotifications() {
    const isGranted = await platform.requestNotificationPermission();
    await this.changeSettings({ notifications: isGranted ? 'granted' : 'denied' });
  }

  /**
   * What only these transfers needed.
   * @param {Transfer[]} transfers
   */
  async #letGoOf(transfers) {
    await this.#outbox.release(transfers.flatMap(({ items }) => items));
    for (const { scratch } of transfers) if (scratch) await discardScratch(scratch).catch(() => {});
  }

  /**
   * @param {import('../protocol/discovery.js').Neighbour} neighbour
   * @param {Item[]} items
   * @param {string} [number] of an earlier attempt
   */
  async #sendTo(neighbour, items, number) {
    const transfer = this.#transfers.add({
      direction: 'send',
      deviceId: neighbour.id,
      deviceName: this.#trust.nameOf(neighbour),
      name: nameOf(items),
      state: 'connecting',
      items,
      ...(number ? { number } : {}),
    });
    await this.#courier.send(transfer, () => this.#endpoint.connect(neighbour));
    if (this.#transfers.list.some(({ id, state }) => id === transfer.id && state === 'complete')) {
      this.#transfers.change(transfer.id, { items: [] });
      await this.#outbox.release(items);
    }
  }

  async #startNetwork() {
    try {
      await this.#devices.start();
      await this.#showSelf(this.settings.isVisible);
      this.#set('problem', null);
    } catch (error) {
      this.#set(
        'problem',
        `The network cannot be used: ${error instanceof Error ? error.message : error}`,
      );
    }
  }

  /** @param {boolean} isVisible */
  async #showSelf(isVisible) {
    if (!this.#canUseNetwork) return;
    if (isVisible) {
      await this.#devices.announceAt(await this.#endpoint.open());
    } else {
      await this.#devices.announceAt(0);
      await this.#endpoint.close();
    }
  }

  async #knownDevicesChanged() {
    const known = await Promise.all(
      this.#trust.known.map(async ({ key, name }) => ({
        key,
        name,
        fingerprint: await fingerprintOf(unhex(key, key.length / 2) ?? new Uint8Array()),
      })),
    );
    this.#set(
      'knownDevices',
      known.sort((left, right) => left.name.localeCompare(right.name)),
    );
  }

  #transfersChanged() {
    this.#set('transfers', this.#transfers.list);
    this.#shell.update(this.settings.isVisible, this.transfers);
    this.#notifications.update(this.transfers);
  }

  /** @param {string} transferId */
  #locationOf(transferId) {
    return firstLocation(this.#transfers.find(transferId));
  }

  /**
   * @template {'devices' | 'knownDevices' | 'outbox' | 'transfers' | 'settings' | 'isDragOver' | 'problem'} K
   * @param {K} property
   * @param {Application[K]} value
   */
  #set(property, value) {
    Object.assign(this, { [property]: value });
    this.dispatchEvent(new CustomEvent(property === 'isDragOver' ? 'drag' : property));
  }
}
