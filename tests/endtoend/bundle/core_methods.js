// Calls what the host answers from the start: inline services and the receive location.

import { call } from './outcome.js';
import { EngineFile, stat } from './engine/files.js';

/** @param {string} name @param {string} content */
async function scratch(name, content) {
  const { value: path } = await call('temporaryReceivePath', { name });
  const file = await EngineFile.create(path);
  await file.write(0, new TextEncoder().encode(content));
  await file.close();
  return path;
}

export async function scenario() {
  const results = {
    deviceName: await call('deviceName'),
    appVersion: await call('appVersion'),
    appSupportPath: await call('appSupportPath'),
    enableMulticast: await call('enableMulticast'),
    writeClipboardText: await call('writeClipboardText', { text: 'copied: naïve 🎈' }),
    openExternalUrl: await call('openExternalUrl', { url: 'https://example.org/x?y=1' }),
    refusedUrl: await call('openExternalUrl', { url: 'HTTPS://example.org' }),
    unknown: await call('DeviceName'),
    prepared: await call('prepareReceiveLocation'),
    badName: await call('setReceiveFolderName', { name: 'a/b' }),
    renamed: await call('setReceiveFolderName', { name: ' Inbox ' }),
  };
  const path = await scratch('a.txt', 'received');
  results.badPath = await call('publishReceivedFile', { path, name: 'a.txt', relativePath: '../x' });
  results.published = await call('publishReceivedFile', { path, name: 'a.txt' });
  results.again = await call('publishReceivedFile', { path: await scratch('a', 'two'), name: 'a.txt' });
  results.directory = await call('publishReceivedDirectory', { relativePath: 'photos\\2024' });
  const location = results.published.value;
  results.exists = await call('receivedFileExists', { location });
  results.located = await call('locateReceivedFiles', { names: ['a.txt', 5, 'gone'] });
  results.opened = await call('openReceivedFile', { location });
  results.revealed = await call('revealReceivedFile', { location });
  results.openGone = await call('openReceivedFile', { location: `${location}.gone` });
  results.revealGone = await call('revealReceivedFile', { location: `${location}.gone` });
  results.openFolder = await call('openReceiveFolder');
  results.scratchLeft = await stat(path);
  return results;
}
