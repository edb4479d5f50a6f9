// What was received, and where it is now.

import { list, remove, replace } from '../engine/files.js';
import { platform } from '../platform.js';
import { textOf, utf8 } from '../protocol/bytes.js';
import { plainFileName } from '../text/foreign_text.js';
import { words } from '../text/words.js';
import { readWhole } from './whole_file.js';

/** @typedef {import('./types.js').Transfer} Transfer */

/** Characters (in UTF-16 units) of a text that the list of transfers holds. */
const LISTED = 4000;
/** Bytes of a text that are copied; the file may have grown since. */
const LARGEST = 64 << 20;
/** Whole texts, and what an interrupted `replace` may leave of one. */
const TEXT = /^\.?text-[0-9a-f-]{36}/;

/**
 * Drops the locations of what was moved or removed since it was received.
 * @param {import('./transfers.js').Transfers} transfers
 */
export async function findReceived(transfers) {
  for (const { id, locations } of transfers.list.filter((one) => one.locations.length > 0)) {
    const found = await platform.locateReceivedFiles(locations.map(lastPiece)).catch(() => []);
    const here = new Set(found.map(({ location }) => location));
    const exists = await Promise.all(
      locations.map(
        (location) =>
          here.has(location) || platform.receivedFileExists(location).catch(() => false),
      ),
    );
    const left = locations.filter((_, at) => exists[at]);
    if (left.length < locations.length) transfers.change(id, { locations: left });
  }
}

/**
 * @param {Transfer} transfer
 * @param {string} [wanted] of its locations; the first where none is given
 */
export function locationIn({ locations }, wanted = locations[0]) {
  if (!wanted || !locations.includes(wanted)) throw new Error(words('received.moved'));
  return wanted;
}

/**
 * Saves a long text as a file in the receive folder, so that the list of transfers stays small, and
 * whole in a file of this application's own, which it may read in later runs as well.
 * @param {{ locations: string[], text: string | null }} received
 * @param {string} deviceName
 * @returns {Promise<Pick<Transfer, 'locations' | 'text' | 'textLocation'>>}
 */
export async function keepReceivedText({ locations, text }, deviceName) {
  if (text === null || text.length <= LISTED) return { locations, text };
  const name = plainFileName(words('received.textFile', { device: deviceName }));
  const path = await platform.temporaryReceivePath(name);
  const bytes = utf8(text);
  const textLocation = `${await platform.appSupportPath()}/text-${crypto.randomUUID()}`;
  await replace(textLocation, bytes);
  await replace(path, bytes);
  const location = await platform.publishReceivedFile({ path, name, relativePath: name });
  return { locations: [...locations, location], text: text.slice(0, LISTED), textLocation };
}

/**
 * Removes the whole texts that no transfer refers to any more.
 * @param {import('./transfers.js').Transfers} transfers
 */
export async function sweepReceivedTexts(transfers) {
  const folder = await platform.appSupportPath();
  const needed = new Set(transfers.list.map(({ textLocation }) => textLocation));
  const texts = (await list(folder)).filter((name) => TEXT.test(name));
  const paths = texts.map((name) => `${folder}/${name}`).filter((path) => !needed.has(path));
  await Promise.all(paths.map((path) => remove(path).catch(() => {})));
}

/**
 * Puts a received text on the clipboard, whole.
 * @param {Transfer} transfer
 */
export async function copyReceivedText({ text, textLocation }) {
  await platform.writeClipboardText(textLocation ? await textIn(textLocation) : (text ?? ''));
}

/** @param {string} path */
async function textIn(path) {
  const bytes = await readWhole(path, LARGEST);
  if (!bytes) throw new Error(words('received.textMoved'));
  return textOf(bytes);
}

/** @param {string} path */
const lastPiece = (path) => path.slice(path.lastIndexOf('/') + 1);
