// The host's methods, as the UI calls them.

import { MethodChannel } from './engine/method_channel.js';

export const channel = new MethodChannel('brevanholt/platform');

/** @typedef {{ name: string, location: string, size: number }} ReceivedFile */

export const platform = {
  /** @returns {Promise<string>} */
  deviceName: () => channel.invokeMethod('deviceName'),
  /** @returns {Promise<{ version: string, buildNumber: string }>} */
  appVersion: () => channel.invokeMethod('appVersion'),
  /** @returns {Promise<boolean>} */
  prepareReceiveLocation: () => channel.invokeMethod('prepareReceiveLocation'),
  /** @param {string} name */
  setReceiveFolderName: (name) => channel.invokeMethod('setReceiveFolderName', { name }),
  openReceiveFolder: () => channel.invokeMethod('openReceiveFolder'),
  /**
   * @param {string} name
   * @returns {Promise<string>}
   */
  temporaryReceivePath: (name) => channel.invokeMethod('temporaryReceivePath', { name }),
  /**
   * @param {{ path: string, name: string, relativePath?: string }} file
   * @returns {Promise<string>} where it was placed
   */
  publishReceivedFile: (file) => channel.invokeMethod('publishReceivedFile', file),
  /**
   * @param {string} location
   * @returns {Promise<boolean>}
   */
  receivedFileExists: (location) => channel.invokeMethod('receivedFileExists', { location }),
  /** @param {string} location */
  openReceivedFile: (location) => channel.invokeMethod('openReceivedFile', { location }),
  /** @param {string} location */
  revealReceivedFile: (location) => channel.invokeMethod('revealReceivedFile', { location }),
  /**
   * @param {string[]} names
   * @returns {Promise<ReceivedFile[]>}
   */
  locateReceivedFiles: (names) => channel.invokeMethod('locateReceivedFiles', { names }),
};
