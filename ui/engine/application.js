// What the engine knows of this run of the application, and does for the window that no method of
// the host does.

import { MethodChannel } from './method_channel.js';

const channel = new MethodChannel('engine/application');

/**
 * What was given as --ui-argument, in order.
 * @returns {Promise<string[]>}
 */
export function uiArguments() {
  return channel.invokeMethod('arguments');
}

/** The languages that the person reads, the best first, and whose customs dates and numbers follow; all
 *  in BCP 47.
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

/** Closes the window as the button of its frame does, which may be asked about. */
export const askToClose = () => channel.invokeMethod('askToClose');

/** Closes the window; the program goes on receiving. */
export const closeWindow = () => channel.invokeMethod('closeWindow');

/** Has what is on the clipboard shared: files, a picture or a text. */
export const paste = () => channel.invokeMethod('paste');

/**
 * Opens the guide for people.
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
 * Hears what the engine tells: “appearanceChanged” (Appearance), “dragMoved” (Drag), “dragLeft”,
 * “dropped” (Drag, before the files of the drop), and “closeAsked” where the window is about to
 * be closed and no status icon shows that the program goes on.
 * @param {(event: string, detail: any) => void} heard
 */
export const listenToEngine = (heard) => channel.setMethodCallHandler(heard);
