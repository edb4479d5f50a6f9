// What the window shows, and the parts that do what a person asks for.

import { setZoom } from '../engine/application.js';
import { platform } from '../platform.js';
import { Endpoint } from '../protocol/endpoint.js';
import { Choosing } from './choosing.js';
import { Courier } from './courier.js';
import { Devices } from './devices.js';
import { Dropping } from './dropping.js';
import { History } from './history.js';
import { KnownDevices } from './known_devices.js';
import { Notifications } from './notifications.js';
import { Outbox } from './outbox.js';
import { Presence } from './presence.js';
import { program } from './program.js';
import { findReceived } from './received.js';
import { Sending } from './sending.js';
import { changedSettings, openFolderCalled } from './settings.js';
import { Shell } from './shell.js';
import { Suggestions } from './suggestions.js';

/** @typedef {import('./types.js').Item} Item */
/** @typedef {import('./types.js').Device} Device */
/** @typedef {import('./types.js').KnownDevice} KnownDevice */
/** @typedef {import('./types.js').Settings} Settings */
/** @typedef {import('../engine/application.js').Drag} Drag */

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
 * Its lists and values are replaced, never changed; each replacement dispatches an event of the
 * property's name. Actions of its parts reject with an Error whose message can be shown.
 */
export class Application extends EventTarget {
  #documents;
  #transfers;
  #outbox;
  #shell = new Shell();
  #notifications;
  #hostName;

  program = program;
  suggestions = new Suggestions();
  choosing;
  sending;
  courier;
  history;
  presence;
  known;
  dropping;

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

  /** @param {Beginning} beginning */
  constructor({ documents, trust, transfers, settings, outbox, party, self, damage, problem }) {
    super();
    this.#documents = documents;
    this.#transfers = transfers;
    this.#hostName = self.name;
    this.#notifications = new Notifications(transfers.list);
    this.#outbox = new Outbox(documents, outbox, () =>
      transfers.list.flatMap(({ items }) => items),
    );
    this.courier = new Courier(transfers, trust);
    const endpoint = new Endpoint(
      party,
      ({ id, key }) => trust.of(id, key) === 'trusted',
      (contact) => this.courier.receive(contact),
    );
    const devices = new Devices(party, trust, endpoint);
    this.choosing = new Choosing(this.#outbox, this.suggestions);
    this.sending = new Sending({
      transfers,
      trust,
      outbox: this.#outbox,
      devices,
      endpoint,
      courier: this.courier,
    });
    this.history = new History(transfers, this.#outbox, this.suggestions);
    this.presence = new Presence(party, devices, endpoint, problem);
    this.known = new KnownDevices(trust, devices, this.suggestions);
    this.dropping = new Dropping(
      this.choosing,
      this.sending,
      this.suggestions,
      () => this.settings.zoom,
    );
    this.self = { ...self, name: party.name };
    this.settings = settings;
    this.damage = damage;
    this.problem = problem;
    /** What is to be sent next. */
    this.outbox = outbox;
    this.transfers = transfers.list;

    this.#follow(this.#outbox, 'outbox', () => this.#outbox.items);
    this.#follow(devices, 'devices', () => devices.list);
    this.#follow(this.known, 'knownDevices', () => this.known.list);
    this.#follow(this.presence, 'problem', () => this.presence.problem);
    this.#follow(this.suggestions, 'suggestion', () => this.suggestions.current);
    this.#follow(this.dropping, 'drag', () => this.dropping.drag);
    transfers.addEventListener('change', () => this.#transfersChanged());
  }

  /** Begins to use the network, and looks for the files of earlier runs. Never rejects. */
  async begin() {
    await Promise.all([this.#outbox.restore(), this.known.refresh()]);
    await findReceived(this.#transfers);
    await this.presence.start(this.settings.isVisible);
    this.#transfersChanged();
    // At every start: a desktop's notification service comes and goes.
    this.requestNotifications().catch(() => {});
    if (this.settings.zoom !== 100) setZoom(this.settings.zoom).catch(() => {});
  }

  /** Looks for devices again, on the networks that there are now, and declares the background mode again. */
  recover() {
    this.#shell.modeWasReset();
    this.#shell.update(this.settings.isVisible, this.transfers);
    this.presence.recover();
  }

  /** @param {Partial<Settings>} change */
  async changeSettings(change) {
    const before = this.settings;
    this.#set('settings', await changedSettings(this.#documents, before, change));
    const { isVisible, zoom, deviceName } = this.settings;
    if (isVisible !== before.isVisible) {
      await this.presence.show(isVisible);
      this.#transfersChanged();
    }
    if (zoom !== before.zoom) await setZoom(zoom);
    if (deviceName !== before.deviceName) {
      const name = deviceName || this.#hostName;
      this.#set('self', { ...this.self, name });
      await this.presence.rename(name, isVisible);
    }
  }

  async requestNotifications() {
    const isGranted = await platform.requestNotificationPermission();
    await this.changeSettings({ notifications: isGranted ? 'granted' : 'denied' });
  }

  openReceiveFolder() {
    return platform.openReceiveFolder();
  }

  /**
   * Opens the folder in Downloads that was the receive folder before.
   * @param {string} name
   */
  openFormerFolder(name) {
    return openFolderCalled(name, this.settings.receiveFolder);
  }

  #transfersChanged() {
    this.#set('transfers', this.#transfers.list);
    this.#shell.update(this.settings.isVisible, this.transfers);
    this.#notifications.update(this.transfers);
  }

  /**
   * Shows what a part of the application has, after each change of it.
   * @template {'devices' | 'knownDevices' | 'outbox' | 'drag' | 'suggestion' | 'problem'} K
   * @param {EventTarget} part
   * @param {K} property
   * @param {() => Application[K]} valueOf
   */
  #follow(part, property, valueOf) {
    part.addEventListener('change', () => this.#set(property, valueOf()));
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
