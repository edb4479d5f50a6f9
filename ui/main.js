import { uiArguments } from './engine/application.js';
import { platform } from './platform.js';
import { receiveFile } from './receive.js';
import { receivedItem } from './received_list.js';

/**
 * @template {HTMLElement} T
 * @param {string} id
 * @returns {T}
 */
const element = (id) => /** @type {T} */ (document.getElementById(id));

/**
 * @param {string} text
 * @param {boolean} [isWrong]
 */
function say(text, isWrong = false) {
  const status = element('status');
  status.textContent = text;
  status.classList.toggle('wrong', isWrong);
}

/** @param {() => Promise<void>} action */
async function attempt(action) {
  try {
    await action();
  } catch (error) {
    say(error instanceof Error ? error.message : String(error), true);
  }
}

/** @param {string} path */
function receive(path) {
  return attempt(async () => {
    say('Receiving…');
    const progress = /** @type {HTMLProgressElement} */ (element('receive-progress'));
    progress.hidden = false;
    progress.removeAttribute('value');
    try {
      const file = await receiveFile(path, () => {});
      element('received').prepend(receivedItem(file, attempt));
      element('nothing-received').hidden = true;
      say(`Received “${file.name}”.`);
    } finally {
      progress.hidden = true;
    }
  });
}

async function showDevice() {
  const [name, version] = await Promise.all([platform.deviceName(), platform.appVersion()]);
  element('device-name').textContent = name;
  element('version').textContent = `Brevanholt ${version.version} (build ${version.buildNumber})`;
}

/** @type {HTMLInputElement} */ (element('folder-name')).value = 'Brevanholt';

element('folder-form').addEventListener('submit', (event) => {
  event.preventDefault();
  attempt(async () => {
    const { value } = /** @type {HTMLInputElement} */ (element('folder-name'));
    await platform.setReceiveFolderName(value);
    const ready = await platform.prepareReceiveLocation();
    say(ready ? `Files go to “${value.trim()}”.` : 'That folder cannot be made.', !ready);
  });
});

element('open-folder').addEventListener('click', () => attempt(platform.openReceiveFolder));

element('receive-form').addEventListener('submit', (event) => {
  event.preventDefault();
  receive(/** @type {HTMLInputElement} */ (element('source-path')).value.trim());
});

attempt(async () => {
  await showDevice();
  for (const argument of await uiArguments()) {
    if (argument.startsWith('receive=')) await receive(argument.slice('receive='.length));
  }
});
