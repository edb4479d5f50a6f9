// All that the window shows, and all that a person can do.

import * as engine from '../engine/application.js';
import { platform } from '../platform.js';
import { fingerprintOf, unhex } from '../protocol/bytes.js';
import { Endpoint } from '../protocol/endpoint.js';
import { discardScratch } from '../protocol/scratch_area.js';
import { isolated, plainName } from '../text/foreign_text.js';
import { byName, currentLanguage } from '../text/locale.js';
import { words } from '../text/words.js';
import { contentFields } from './contents.js';
import { Courier } from './courier.js';
import { Devices } from './devices.js';
import { itemOf, measured } from './items.js';
import { Notifications } from './notifications.js';
import { Outbox } from './outbox.js';
import { copyReceivedText, findReceived, locationIn } from './received.js';
import { changedSettings, openFolderCalled } from './settings.js';
import { Shell } from './shell.js';
import { Suggestions } from './suggestions.js';
import { hasEnded } from './transfer_states.js';

/** @typedef {import('./types.js').Item} Item */
/** @typedef {import('./types.js').Device} Device */
/** @typedef {import('./types.js').KnownDevice} KnownDevice */
/** @typedef {import('./types.js').Transfer} Transfer */
/** @typedef {import('./types.js').Settings} Settings */
/** @typedef {import('../engine/application.js').Drag} Drag */
/** In pixels of the page. @typedef {{ x: number, y: number }} Place */

/**
 * What is loaded at the start.
 * @typedef {object} Beginning
 * @property {import('./documents.js').Documents} documents
 * @property {import('./trust.js').Trust} trust
 * @property {import('./transfers.js').Transfers} transfers
 * @property {Settings} settings
 * @property {Item[]} outbox
 * @property {import('../protocol/handshake.js').Party} party
 * @property {{ name: string, fingerprint: string, version: string }} self with the host's name
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
  #party;
  #hostName;
  #suggestions = new Suggestions();
  /** Where something was dropped whose files are still to come. @type {Place | null} */
  #dropPlace = null;

  /** @type {Device[]} */
  devices = [];
  /** By name. @type {KnownDevice[]} */
  knownDevices = [];
  /** Why the network cannot be used. @type {string | null} */
  problem;
  /** What is dragged over the window. @type {Drag | null} */
  drag = null;
  /** What the window suggests. @type {import('./suggestions.js').Suggestion | null} */
  suggestion = null;
  /** The device that is shown at a place, by its id; whoever shows the devices knows.
   *  @type {(place: Place) => string | null} */
  deviceAt = () => null;

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
    this.#party = party;
    this.#hostName = self.name;
    this.self = { ...self, name: party.name };
    this.settings = settings;
    this.damage = damage;
    this.problem = problem;
    /** What is to be sent next. */
    this.outbox = outbox;
    this.transfers = transfers.list;
    this.#outbox.addEventListener('change', () => this.#set('outbox', this.#outbox.items));
    this.#devices.addEventListener('change', () => {
      this.#set('devices', this.#devices.list);
      this.#knownDevicesChanged();
      const { hasNetwork } = this.#devices;
      const none = words('network.none');
      if (hasNetwork === (this.problem === none)) this.#set('problem', hasNetwork ? null : none);
    });
    this.#suggestions.addEventListener('change', () =>
      this.#set('suggestion', this.#suggestions.current),
    );
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
    if (this.settings.zoom !== 100) engine.setZoom(this.settings.zoom).catch(() => {});
  }

  /** Looks for devices again, on the networks that there are now. */
  recover() {
    this.#shell.modeWasReset();
    this.#shell.update(this.settings.isVisible, this.transfers);
    if (this.#canUseNetwork) this.#devices.recover();
  }

  /** @param {boolean} isDragOver */
  dragOver(isDragOver) {
    if (!isDragOver) this.#set('drag', null);
    else if (!this.drag) this.#set('drag', { x: -1, y: -1, hasFiles: true, folders: [] });
  }

  /** @param {Drag} drag */
  dragMoved(drag) {
    this.#set('drag', this.#onThePage(drag));
  }

  /** What is dragged has left the window, or was not taken. */
  dragLeft() {
    if (this.drag) this.#tellOfFolders(this.drag.folders);
    this.#set('drag', null);
  }

  /** @param {Drag} drag whose files come next */
  dropped(drag) {
    this.#dropPlace = this.#onThePage(drag);
    this.#set('drag', null);
    this.#tellOfFolders(drag.folders);
  }

  /**
   * @param {Drag} drag
   * @returns {Drag} with its place in pixels of the page
   */
  #onThePage(drag) {
    const scale = this.settings.zoom / 100;
    return { ...drag, x: drag.x / scale, y: drag.y / scale };
  }

  /**
   * Takes dropped files: for the device on which they were dropped, else to be sent next.
   * @param {import('../platform.js').SharedEntry[]} entries
   */
  async takeDrop(entries) {
    const deviceId = this.#dropPlace && this.deviceAt(this.#dropPlace);
    this.#dropPlace = null;
    if (!deviceId) return this.add(entries);
    const neighbour = this.#devices.neighbour(deviceId);
    const items = entries.map(itemOf);
    const measures = await measured(items);
    this.#sendTo(
      neighbour,
      items.map((item) => measures.get(item) ?? item),
    );
  }

  /** @param {import('../platform.js').SharedEntry[]} entries */
  async add(entries) {
    const repeated = await this.#outbox.add(entries);
    const top = repeated.filter(({ relativePath }) => !relativePath?.includes('/'));
    if (top.length === 0) return;
    const text = words('send.alreadyAdded', { names: namesOf(top), count: top.length });
    this.#suggestions.offer({ text });
  }

  /** Has the host share what is on the clipboard. */
  paste() {
    return engine.paste();
  }

  /** Ends the program, whatever it does. */
  quit() {
    return engine.quit();
  }

  closeWindow() {
    return engine.closeWindow();
  }

  /** Closes the window as its frame's button does. */
  askToClose() {
    return engine.askToClose();
  }

  openHelp() {
    return engine.openHelp(currentLanguage());
  }

  /** Does what the window suggests. */
  takeSuggestion() {
    return this.#suggestions.take();
  }

  dismissSuggestion() {
    this.#suggestions.dismiss();
  }

  async pickFiles() {
    await this.add(await platform.pickFiles());
  }

  async pickFolder() {
    await this.add(await platform.pickFolder());
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

  async clearOutbox() {
    const { itemCount } = contentFields(this.outbox);
    const gone = await this.#outbox.clear();
    this.#suggestions.offer({
      text: words('send.cleared', { count: itemCount }),
      label: words('notices.undo'),
      run: () => this.#outbox.putBack(gone),
      settle: () => this.#outbox.release(gone),
    });
  }

  /**
   * Sends the outbox to each of the devices.
   * @param {string[]} deviceIds
   */
  async send(deviceIds) {
    const items = this.outbox;
    if (items.length === 0) throw new Error(words('send.nothing'));
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
    this.#suggestions.offer({
      text: words('transfers.cleared', { count: ended.length }),
      label: words('notices.undo'),
      run: () => this.#transfers.restore(ended),
      settle: () => this.#letGoOf(ended),
    });
  }

  /**
   * @param {string} transferId
   * @param {string} [location] the first where none is given
   */
  async open(transferId, location) {
    const place = this.#locationOf(transferId, location);
    try {
      await platform.openReceivedFile(place);
    } catch (error) {
      if (!(await platform.receivedFileExists(place))) throw new Error(words('received.moved'));
      const file = isolated(plainName(place.slice(place.lastIndexOf('/') + 1)));
      throw new Error(words('received.noApplication', { file }), { cause: error });
    }
  }

  /**
   * @param {string} transferId
   * @param {string} [location] the first where none is given
   */
  async reveal(transferId, location) {
    await platform.revealReceivedFile(this.#locationOf(transferId, location));
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

  /**
   * A PNG of something that is to be sent, or null.
   * @param {Item} item
   * @param {number} maximumDimension
   */
  async itemPreview({ kind, path }, maximumDimension) {
    return kind === 'file' ? platform.receivedFilePreview(path, maximumDimension) : null;
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

  /**
   * Opens the folder in Downloads that was the receive folder before.
   * @param {string} name
   */
  openFormerFolder(name) {
    return openFolderCalled(name, this.settings.receiveFolder);
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
    if (this.settings.zoom !== before.zoom) await engine.setZoom(this.settings.zoom);
    if (this.settings.deviceName !== before.deviceName) await this.#rename();
  }

  async #rename() {
    const name = this.settings.deviceName || this.#hostName;
    this.#party.name = name;
    this.#set('self', { ...this.self, name });
    if (this.settings.isVisible) await this.#showSelf(true);
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
      ...contentFields(items),
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
        words('network.failed', { why: error instanceof Error ? error.message : String(error) }),
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
      this.#trust.known.map(async ({ key, name, since = 0, seen = 0, acceptsUpTo = 0 }) => ({
        key,
        name,
        since,
        seen,
        acceptsUpTo,
        isNear: this.devices.some((one) => one.key === key && one.trust === 'trusted'),
        fingerprint: await fingerprintOf(unhex(key, key.length / 2) ?? new Uint8Array()),
      })),
    );
    this.#set(
      'knownDevices',
      known.sort((left, right) => byName(left.name, right.name)),
    );
  }

  #transfersChanged() {
    this.#set('transfers', this.#transfers.list);
    this.#shell.update(this.settings.isVisible, this.transfers);
    this.#notifications.update(this.transfers);
  }

  /** @param {string[]} folders */
  #tellOfFolders(folders) {
    if (folders.length === 0) return;
    this.#suggestions.offer({
      text: words('drop.leftOut', {
        names: folders.map((name) => isolated(plainName(name))),
        count: folders.length,
      }),
      label: words('send.addFolder'),
      run: () => this.pickFolder(),
    });
  }

  /**
   * @param {string} transferId
   * @param {string} [location]
   */
  #locationOf(transferId, location) {
    return locationIn(this.#transfers.find(transferId), location);
  }

  /**
   * @template {'self' | 'devices' | 'knownDevices' | 'outbox' | 'transfers' | 'settings' | 'drag' | 'suggestion' | 'problem'} K
   * @param {K} property
   * @param {Application[K]} value
   */
  #set(property, value) {
    Object.assign(this, { [property]: value });
    this.dispatchEvent(new CustomEvent(property));
  }
}

/** @param {Item[]} items */
const namesOf = (items) => contentFields(items).contents.map(({ name }) => isolated(name));
