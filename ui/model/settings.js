// What the person set, and the host's part in it.

import { platform } from '../platform.js';

/** @typedef {import('./types.js').Settings} Settings */

const DOCUMENT = 'settings';

/** @type {Settings} */
const INITIAL = { receiveFolder: 'Brevanholt', isVisible: true, launchAtStartup: false,
  notifications: 'unknown', showsConsole: false };

/** @param {any} stored */
function known(stored) {
  return Object.fromEntries(Object.entries(INITIAL)
    .map(([name, initial]) => [name, typeof stored?.[name] === typeof initial ? stored[name] : initial]));
}

/**
 * @param {import('./storage.js').Storage} storage
 * @returns {Promise<Settings>}
 */
export async function loadSettings(storage) {
  const settings = /** @type {Settings} */ (known(await storage.load(DOCUMENT)));
  await platform.setReceiveFolderName(settings.receiveFolder).catch(() => {
    settings.receiveFolder = INITIAL.receiveFolder;
  });
  await platform.prepareReceiveLocation().catch(() => {});
  settings.launchAtStartup = await platform.launchAtStartupEnabled().catch(() => false);
  return settings;
}

/**
 * Has the host do what changes, and keeps it. Throws, and keeps nothing, where the host refuses.
 * @param {import('./storage.js').Storage} storage
 * @param {Settings} before
 * @param {Partial<Settings>} change
 * @returns {Promise<Settings>}
 */
export async function changedSettings(storage, before, change) {
  const after = { ...before, ...change };
  after.receiveFolder = after.receiveFolder.trim();
  if (after.receiveFolder !== before.receiveFolder) {
    await platform.setReceiveFolderName(after.receiveFolder);
    if (!await platform.prepareReceiveLocation()) {
      await platform.setReceiveFolderName(before.receiveFolder);
      throw new Error('That folder cannot be made.');
    }
  }
  if (after.launchAtStartup !== before.launchAtStartup) {
    await platform.setLaunchAtStartup(after.launchAtStartup);
    after.launchAtStartup = await platform.launchAtStartupEnabled();
  }
  await storage.save(DOCUMENT, after);
  return after;
}
