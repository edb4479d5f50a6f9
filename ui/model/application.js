// All that the window shows, and all that a person can do.

import { platform, platformEvents, listenToPlatform } from '../platform.js';
import { fingerprintOf } from '../protocol/bytes.js';
import { Endpoint } from '../protocol/endpoint.js';
import { Courier } from './courier.js';
import { Devices } from './devices.js';
import { itemOf, measured, nameOf, pathsOf, releasablePaths, textItem } from './items.js';
import { Notices } from './notices.js';
import { changedSettings, loadSettings } from './settings.js';
import { sweepScratches } from './scratches.js';
import { Shell } from './shell.js';
import { Storage } from './storage.js';
import { canRetry, isEnded, Transfers } from './transfers.js';
import { Trust } from './trust.js';

/** @typedef {import('./types.js').Item} Item */
/** @typedef {import('./types.js').Device} Device */
/** @typedef {import('./types.js').Transfer} Transfer */
/** @typedef {import('./types.js').Settings} Settings */

/**
 * What is read once at the start.
 * @typedef {object} Beginning
 * @property {Storage} storage
 * @property {Trust} trust
 * @property {Transfers} transfers
 * @property {Settings} settings
 * @property {Item[]} outbox
 * @property {import('../protocol/handshake.js').Party} party
 * @property {{ name: string, fingerprint: string, version: string }} self
 */

/**
 * Its properties are replaced, never changed; each replacement dispatches an event of the
 * property's name. Actions reject with an Error whose message can be shown.
 */
export class Application extends EventTarget {
  #storage;
  #trust;
  #transfers;
  #devices;
  #endpoint;
  #courier;
  #shell = new Shell();
  #notices;

  /** @type {Device[]} */
  devices = [];
  /** @type {string | null} */
  problem = null;
  isDragOver = false;

  /** @param {Beginning} beginning */
  constructor({ storage, trust, transfers, settings, outbox, party, self }) {
    super();
    this.#storage = storage;
    this.#trust = trust;
    this.#transfers = transfers;
    this.#devices = new Devices(party, trust);
    this.#courier = new Courier(transfers, trust);
    this.#endpoint = new Endpoint(party, (contact) => this.#courier.receive(contact));
    this.#notices = new Notices(transfers.list);
    this.self = self;
    this.settings = settings;
    /** What is to be sent next. */
    this.outbox = outbox;
    this.transfers = transfers.list;
    this.#devices.addEventListener('change', () => this.#set('devices', this.#devices.list));
    transfers.addEventListener('change', () => this.#transfersChanged());
  }

  /** @returns {Promise<Application>} */
  static async start() {
    const storage = new Storage(await platform.appSupportPath());
    const [name, { version }, key] = await Promise.all(
      [platform.deviceName(), platform.appVersion(), platform.cryptoCreateIdentity()]);
    const stored = await storage.load('device');
    const id = typeof stored?.id === 'string' ? stored.id : crypto.randomUUID();
    if (!stored) await storage.save('device', { id });
    await sweepScratches(storage);
    const [trust, transfers, settings, kept] = await Promise.all([Trust.load(storage),
      Transfers.load(storage), loadSettings(storage), storage.load('outbox')]);
    const application = new Application({ storage, trust, transfers, settings,
      outbox: Array.isArray(kept) ? kept : [], party: { id, name, key },
      self: { name, fingerprint: await fingerprintOf(key), version } });
    await application.#begin();
    return application;
  }

  async #begin() {
    platformEvents.addEventListener('sharedEntries', (event) => this.#take(event));
    platformEvents.addEventListener('filesDropped', (event) => {
      this.#set('isDragOver', false);
      this.#take(event);
    });
    platformEvents.addEventListener('dragActiveChanged', (event) =>
      this.#set('isDragOver', /** @type {CustomEvent} */ (event).detail === true));
    platformEvents.addEventListener('discoveryRecoveryRequested', () => this.#devices.recover());
    listenToPlatform();
    const unsent = [...this.outbox, ...this.transfers.filter(canRetry).flatMap(({ items }) => items)];
    if (unsent.length > 0) await platform.restorePickedFiles(pathsOf(unsent)).catch(() => {});
    await this.#findReceived();
    await this.#startNetwork();
    this.#transfersChanged();
    // At every start: a desktop's notification service comes and goes.
    this.requestNotifications().catch(() => {});
    await platform.platformEventsReady();
  }

  async #startNetwork() {
    try {
      await this.#devices.start();
      await this.#showSelf(this.settings.isVisible);
      this.#set('problem', null);
    } catch (error) {
      this.#set('problem', `The network cannot be used: ${error instanceof Error ? error.message : error}`);
    }
  }

  /** @param {boolean} isVisible */
  async #showSelf(isVisible) {
    if (isVisible) {
      await this.#devices.announceAt(await this.#endpoint.open());
    } else {
      await this.#devices.announceAt(0);
      await this.#endpoint.close();
    }
  }

  /** What was received in earlier runs may have been moved or removed since. */
  async #findReceived() {
    for (const { id, locations } of this.transfers.filter(({ locations: places }) => places.length > 0)) {
      const found = await platform.locateReceivedFiles(locations.map(lastPiece)).catch(() => []);
      const here = new Set(found.map(({ location }) => location));
      const exists = await Promise.all(locations.map((location) =>
        here.has(location) || platform.receivedFileExists(location).catch(() => false)));
      const left = locations.filter((_, at) => exists[at]);
      if (left.length < locations.length) this.#transfers.change(id, { locations: left });
    }
  }

  async pickFiles() {
    this.#add(await platform.pickFiles());
  }

  async pickFolder() {
    this.#add(await platform.pickFolder());
  }

  /** @param {string} text */
  addText(text) {
    this.#setOutbox([...this.outbox, textItem(text)]);
  }

  /**
   * Removes an item, and with a folder all that is in it.
   * @param {Item} item
   */
  async removeItem(item) {
    const isIt = (/** @type {Item} */ one) => one.path === item.path && one.text === item.text;
    const isGone = (/** @type {Item} */ one) => isIt(one) ||
      (item.kind === 'directory' && one.path.startsWith(`${item.path}/`));
    const gone = this.outbox.filter(isGone);
    this.#setOutbox(this.outbox.filter((one) => !isGone(one)));
    await this.#release(gone);
  }

  async clearOutbox() {
    const gone = this.outbox;
    this.#setOutbox([]);
    await this.#release(gone);
  }

  /**
   * Sends the outbox to each of the devices.
   * @param {string[]} deviceIds
   */
  async send(deviceIds) {
    const items = this.outbox;
    if (items.length === 0) throw new Error('There is nothing to send yet.');
    const neighbours = deviceIds.map((id) => this.#devices.neighbour(id));
    this.#setOutbox([]);
    for (const neighbour of neighbours) this.#sendTo(neighbour, items);
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
    this.#courier.answer(transferId, true);
  }

  /** @param {string} transferId */
  async decline(transferId) {
    this.#courier.answer(transferId, false);
  }

  /** @param {string} transferId */
  cancel(transferId) {
    return this.#courier.cancel(transferId);
  }

  /** @param {string} transferId */
  async retry(transferId) {
    const { deviceId, items } = this.#transfers.find(transferId);
    const neighbour = this.#devices.withIdentity(deviceId);
    this.#transfers.remove(({ id }) => id === transferId);
    this.#sendTo(neighbour, items);
  }

  /** @param {string} transferId */
  async removeTransfer(transferId) {
    const { items } = this.#transfers.find(transferId);
    this.#transfers.remove(({ id }) => id === transferId);
    await this.#release(items);
  }

  async clearRecents() {
    const items = this.#transfers.list.filter(isEnded).flatMap((transfer) => transfer.items);
    this.#transfers.remove(() => true);
    await this.#release(items);
  }

  /** @param {string} transferId */
  open(transferId) {
    return platform.openReceivedFile(this.#placeOf(transferId));
  }

  /** @param {string} transferId */
  reveal(transferId) {
    return platform.revealReceivedFile(this.#placeOf(transferId));
  }

  /** @param {string} transferId */
  async copyText(transferId) {
    await platform.writeClipboardText(this.#transfers.find(transferId).text ?? '');
  }

  /**
   * A PNG of the first thing that was received, or null.
   * @param {string} transferId
   * @param {number} maximumDimension
   */
  async preview(transferId, maximumDimension) {
    return platform.receivedFilePreview(this.#placeOf(transferId), maximumDimension);
  }

  /** @param {string} deviceId */
  async agreeToNewKey(deviceId) {
    const { id, key } = this.#devices.neighbour(deviceId);
    this.#trust.agree(id, key);
  }

  /** @param {string} deviceId */
  async forgetDevice(deviceId) {
    await this.#trust.forget(this.#devices.neighbour(deviceId).id);
  }

  openReceiveFolder() {
    return platform.openReceiveFolder();
  }

  /** @param {Partial<Settings>} change */
  async changeSettings(change) {
    const before = this.settings;
    this.#set('settings', await changedSettings(this.#storage, before, change));
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
   * @param {import('../protocol/discovery.js').Neighbour} neighbour
   * @param {Item[]} items
   */
  async #sendTo(neighbour, items) {
    const transfer = this.#transfers.add({ direction: 'send', deviceId: neighbour.id,
      deviceName: neighbour.name, name: nameOf(items), state: 'connecting', items });
    await this.#courier.send(transfer, () => this.#endpoint.connect(neighbour));
    if (this.#transfers.list.some(({ id, state }) => id === transfer.id && state === 'complete')) {
      this.#transfers.change(transfer.id, { items: [] });
      await this.#release(items);
    }
  }

  /** @param {Event} event of entries from outside */
  #take(event) {
    const entries = /** @type {CustomEvent} */ (event).detail;
    if (Array.isArray(entries)) this.#add(entries);
  }

  /** @param {import('../platform.js').SharedEntry[]} entries */
  #add(entries) {
    const items = entries.map(itemOf);
    if (items.length === 0) return;
    this.#setOutbox([...this.outbox, ...items]);
    this.#measure(items);
  }

  /**
   * Pickers and drops do not say how large things are.
   * @param {Item[]} items
   */
  async #measure(items) {
    const measures = await measured(items);
    this.#setOutbox(this.outbox.map((item) => measures.get(item) ?? item));
  }

  /** @param {Item[]} outbox */
  #setOutbox(outbox) {
    this.#set('outbox', outbox);
    this.#storage.save('outbox', outbox).catch(() => {});
  }

  /**
   * Lets go of what nothing that is still to be sent needs.
   * @param {Item[]} items
   */
  async #release(items) {
    const needed = [...this.outbox, ...this.#transfers.list.flatMap((one) => one.items)];
    const paths = releasablePaths(items, needed);
    if (paths.length > 0) await platform.releasePickedFiles(paths).catch(() => {});
  }

  #transfersChanged() {
    this.#set('transfers', this.#transfers.list);
    this.#shell.update(this.settings.isVisible, this.transfers);
    this.#notices.update(this.transfers);
  }

  /** @param {string} transferId */
  #placeOf(transferId) {
    const [first] = this.#transfers.find(transferId).locations;
    if (!first) throw new Error('It is no longer where it was received.');
    return first;
  }

  /**
   * @template {'devices' | 'outbox' | 'transfers' | 'settings' | 'isDragOver' | 'problem'} K
   * @param {K} property
   * @param {Application[K]} value
   */
  #set(property, value) {
    Object.assign(this, { [property]: value });
    this.dispatchEvent(new CustomEvent(property === 'isDragOver' ? 'drag' : property));
  }
}

/** @param {string} path */
const lastPiece = (path) => path.slice(path.lastIndexOf('/') + 1);
