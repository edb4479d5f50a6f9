// The host's methods and events, as the UI knows them.

import { Float64 } from './engine/codec.js';
import { MethodChannel } from './engine/method_channel.js';

export { Float64 };

const channel = new MethodChannel('brevanholt/platform');

/** @typedef {{ name: string, location: string, size: number }} ReceivedFile */
/** @typedef {{ path: string, name: string, size: number, relativePath?: string,
 *              kind?: 'file' | 'directory' | 'text', text?: string }} SharedEntry */
/** @typedef {{ title: string, item: string, stateKey: string, progressLabel: string,
 *              progress: Float64 }} TransferSnapshot */
/** @typedef {{ visible: boolean, activeTransfer: TransferSnapshot | null,
 *              recentTransfers: TransferSnapshot[] }} DesktopShell */

/**
 * @param {string} method
 * @param {object | null} [args]
 */
const call = (method, args = null) => channel.invokeMethod(method, args);

export const platform = {
  /** @returns {Promise<string>} */
  deviceName: () => call('deviceName'),
  platformEventsReady: () => call('platformEventsReady'),
  /** @returns {Promise<string>} */
  appSupportPath: () => call('appSupportPath'),
  /** @returns {Promise<{ version: string, buildNumber: string }>} */
  appVersion: () => call('appVersion'),
  /** @returns {Promise<boolean>} */
  launchAtStartupEnabled: () => call('launchAtStartupEnabled'),
  /** @param {boolean} enabled */
  setLaunchAtStartup: (enabled) => call('setLaunchAtStartup', { enabled }),
  /** @param {DesktopShell} shell */
  updateDesktopShell: (shell) => call('updateDesktopShell', shell),
  /** @returns {Promise<SharedEntry[]>} */
  pickFiles: () => call('pickFiles'),
  /** @returns {Promise<SharedEntry[]>} */
  pickFolder: () => call('pickFolder'),
  /** @param {string[]} paths */
  restorePickedFiles: (paths) => call('restorePickedFiles', { paths }),
  /** @param {string[]} paths */
  releasePickedFiles: (paths) => call('releasePickedFiles', { paths }),
  /** @returns {Promise<boolean>} */
  prepareReceiveLocation: () => call('prepareReceiveLocation'),
  /** @param {string} text */
  writeClipboardText: (text) => call('writeClipboardText', { text }),
  /** @param {string} url */
  openExternalUrl: (url) => call('openExternalUrl', { url }),
  openReceiveFolder: () => call('openReceiveFolder'),
  /** @param {string} name */
  setReceiveFolderName: (name) => call('setReceiveFolderName', { name }),
  /**
   * @param {string} name
   * @returns {Promise<string>}
   */
  temporaryReceivePath: (name) => call('temporaryReceivePath', { name }),
  /**
   * @param {{ path: string, name: string, relativePath?: string }} file
   * @returns {Promise<string>} where it was placed
   */
  publishReceivedFile: (file) => call('publishReceivedFile', file),
  /**
   * @param {string} relativePath
   * @returns {Promise<string>} where it is
   */
  publishReceivedDirectory: (relativePath) => call('publishReceivedDirectory', { relativePath }),
  /**
   * @param {string} location
   * @returns {Promise<boolean>}
   */
  receivedFileExists: (location) => call('receivedFileExists', { location }),
  /** @param {string} location */
  openReceivedFile: (location) => call('openReceivedFile', { location }),
  /** @param {string} location */
  revealReceivedFile: (location) => call('revealReceivedFile', { location }),
  /**
   * @param {string} location
   * @param {number} maximumDimension in pixels
   * @returns {Promise<Uint8Array | null>} a PNG
   */
  receivedFilePreview: (location, maximumDimension) =>
    call('receivedFilePreview', { location, maximumDimension }),
  /**
   * @param {string[]} names
   * @returns {Promise<ReceivedFile[]>}
   */
  locateReceivedFiles: (names) => call('locateReceivedFiles', { names }),
  enableMulticast: () => call('enableMulticast'),
  /** @returns {Promise<boolean>} */
  requestNotificationPermission: () => call('requestNotificationPermission'),
  /** @param {{ enabled: boolean, transferInProgress: boolean }} mode */
  setBackgroundMode: (mode) => call('setBackgroundMode', mode),
  /** @param {{ id: string, title: string, body: string }} notification */
  showNotification: (notification) => call('showNotification', notification),
  /** @param {string} id */
  clearNotification: (id) => call('clearNotification', { id }),
  /** @returns {Promise<Uint8Array>} this device's public key */
  cryptoCreateIdentity: () => call('cryptoCreateIdentity'),
  /**
   * @param {Uint8Array} publicKey
   * @returns {Promise<Uint8Array>}
   */
  cryptoDeriveSharedKey: (publicKey) => call('cryptoDeriveSharedKey', { publicKey }),
  /**
   * @param {Uint8Array} key
   * @param {Uint8Array} data
   * @returns {Promise<Uint8Array>}
   */
  cryptoEncrypt: (key, data) => call('cryptoEncrypt', { key, data }),
  /**
   * @param {Uint8Array} key
   * @param {Uint8Array} data
   * @returns {Promise<Uint8Array>}
   */
  cryptoDecrypt: (key, data) => call('cryptoDecrypt', { key, data }),
};

/**
 * Calls any method by name.
 * @param {string} method
 * @param {unknown} args
 */
export const invoke = (method, args) => channel.invokeMethod(method, args);

/** The host's events: “sharedEntries”, “filesDropped”, “dragActiveChanged” and
 *  “discoveryRecoveryRequested”, each a CustomEvent with the arguments as its detail. What came
 *  before listenToPlatform is delivered by it. */
export const platformEvents = new EventTarget();

export function listenToPlatform() {
  channel.setMethodCallHandler((method, detail) => {
    platformEvents.dispatchEvent(new CustomEvent(method, { detail }));
  });
}
