// The person's settings, of which the host applies some.

import { platform } from '../platform.js';
import { words } from '../text/words.js';
import { fittingValues, isCount, isFlag, isMissingOr, isOneOf, isText } from './schema.js';

/** @typedef {import('./types.js').Settings} Settings */

const DOCUMENT = 'settings';

/** At the first start. @type {Settings} */
export const INITIAL_SETTINGS = {
  receiveFolder: 'Brevanholt',
  isVisible: true,
  launchAtStartup: false,
  notifications: 'unknown',
  showsConsole: false,
  deviceName: '',
  zoom: 100,
  knowsItStays: false,
};

/** For values that are missing or damaged: the person may have hidden this device. */
const SAFE = { ...INITIAL_SETTINGS, isVisible: false };

const FIELDS = {
  receiveFolder: isText,
  isVisible: isFlag,
  launchAtStartup: isFlag,
  notifications: isOneOf(['unknown', 'granted', 'denied']),
  showsConsole: isFlag,
  deviceName: isMissingOr(isText),
  zoom: isMissingOr(isCount),
  knowsItStays: isMissingOr(isFlag),
};

/**
 * @param {import('./documents.js').Documents} documents
 * @returns {Promise<Settings>}
 */
export async function loadSettings(documents) {
  const stored = await documents.load(DOCUMENT, (content) =>
    fittingValues(DOCUMENT, content, FIELDS),
  );
  const isFirstStart = !stored && !documents.damaged.has(DOCUMENT);
  const settings = isFirstStart ? { ...INITIAL_SETTINGS } : { ...SAFE, ...stored };
  // Saved at once: without a document the next start would count as the first one.
  if (!isFirstStart) await documents.save(DOCUMENT, settings).catch(() => {});
  await platform.setReceiveFolderName(settings.receiveFolder).catch(() => {
    settings.receiveFolder = INITIAL_SETTINGS.receiveFolder;
  });
  await platform.prepareReceiveLocation().catch(() => {});
  settings.launchAtStartup = await platform.launchAtStartupEnabled().catch(() => false);
  return settings;
}

/**
 * Applies a change through the host and saves it. Throws, and saves nothing, where the host refuses.
 * @param {import('./documents.js').Documents} documents
 * @param {Settings} before
 * @param {Partial<Settings>} change
 * @returns {Promise<Settings>}
 */
export async function changedSettings(documents, before, change) {
  const after = { ...before, ...change };
  after.receiveFolder = after.receiveFolder.trim();
  after.deviceName = after.deviceName.trim();
  if (after.receiveFolder !== before.receiveFolder) {
    await platform.setReceiveFolderName(after.receiveFolder);
    if (!(await platform.prepareReceiveLocation())) {
      await platform.setReceiveFolderName(before.receiveFolder);
      throw new Error(words('settings.folderFailed'));
    }
  }
  if (after.launchAtStartup !== before.launchAtStartup) {
    await platform.setLaunchAtStartup(after.launchAtStartup);
    after.launchAtStartup = await platform.launchAtStartupEnabled();
  }
  await documents.save(DOCUMENT, after);
  return after;
}

/**
 * Opens a receive folder of another name. The host handles the three calls in this order, and no other
 * call between them.
 * @param {string} name
 * @param {string} current
 */
export async function openFolderCalled(name, current) {
  await Promise.all([
    platform.setReceiveFolderName(name),
    platform.openReceiveFolder(),
    platform.setReceiveFolderName(current),
  ]);
}
