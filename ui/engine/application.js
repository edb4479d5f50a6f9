// What the engine tells about this run of the application, and services for the window for which the
// host has no method.

import { MethodChannel } from './method_channel.js';

const channel = new MethodChannel('engine/application');

/**
 * What was given as --ui-argument, in order.
 * @returns {Promise<string[]>}
 */
export function uiArguments() {
  return channel.invokeMethod('arguments');
}

/** The languages that the person reads, preferred first, and the locales of dates and of numbers; all in
 *  BCP 47 (RFC 5646).
 *  @typedef {{ languages: string[], time: string, numbers: string }} Locale */

/** `accent`: such as “#3584e4”, or empty where the desktop has none.
 *  @typedef {{ hasHighContrast: boolean, accent: string }} Appearance */

/** Where a drag is, in pixels of the window at its normal size, and what it brings.
 *  @typedef {{ x: number, y: number, hasFiles: boolean, folders: string[] }} Drag */

/** @returns {Promise<Locale>} */
export const locale = () => channel.invokeMethod('locale');

/** @returns {Promise<Appearance>} what the desktop asks for, besides light or dark */
export const appearance = () => channel.invokeMethod('appearance');

/** Ends the program. */
export const quit = () => channel.invokeMethod('quit');

/** Closes the window as the button of its frame does; “closeAsked” may follow. */
export const askToClose = () => channel.invokeMethod('askToClose');

/** Closes the window; the program goes on receiving. */
export const closeWindow = () => channel.invokeMethod('closeWindow');

/** Shares what is on the clipboard: files, a picture or a text. */
export const paste = () => channel.invokeMethod('paste');

/**
 * Opens the help in the web browser.
 * @param {string} language such as “de”
 */
export const openHelp = (language) => channel.invokeMethod('openHelp', { language });

/**
 * Whether the status icon is to say that something waits for the person.
 * @param {boolean} needs
 */
export const setNeedsAttention = (needs) => channel.invokeMethod('setNeedsAttention', { needs });

/**
 * Shows the page larger or smaller.
 * @param {number} percent of its normal size
 */
export const setZoom = (percent) => channel.invokeMethod('setZoom', { percent });

/**
 * Warns on the page's console and in the host's log, which has the first hundred of a run.
 * @param {string} text without content of the person's
 */
export function logWarning(text) {
  console.warn(text);
  channel.invokeMethod('log', { text }).catch(() => {});
}

/**
 * Listens to the engine's events: “appearanceChanged” (Appearance), “dragMoved” (Drag), “dragLeft”,
 * “dropped” (Drag, before the files of the drop), and “closeAsked” where the window is about to
 * be closed and no status icon shows that the program goes on.
 * @param {(event: string, detail: any) => void} heard
 */
export const listenToEngine = (heard) => channel.setMethodCallHandler(heard);
