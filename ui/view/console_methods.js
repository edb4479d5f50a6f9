// The host's methods with their arguments and the types of these; a question mark where an argument
// may be absent or of another type.

/** @type {Record<string, Record<string, string>>} */
export const METHODS = {
  deviceName: {},
  platformEventsReady: {},
  appSupportPath: {},
  appVersion: {},
  launchAtStartupEnabled: {},
  setLaunchAtStartup: { enabled: 'boolean?' },
  updateDesktopShell: { visible: 'boolean?', activeTransfer: 'null?', recentTransfers: 'list?' },
  pickFiles: {},
  pickFolder: {},
  restorePickedFiles: { paths: 'strings' },
  releasePickedFiles: { paths: 'strings' },
  prepareReceiveLocation: {},
  writeClipboardText: { text: 'string' },
  openExternalUrl: { url: 'string' },
  openReceiveFolder: {},
  setReceiveFolderName: { name: 'string' },
  temporaryReceivePath: { name: 'string' },
  publishReceivedFile: { path: 'string', name: 'string?', relativePath: 'string?' },
  publishReceivedDirectory: { relativePath: 'string' },
  receivedFileExists: { location: 'string' },
  openReceivedFile: { location: 'string' },
  revealReceivedFile: { location: 'string' },
  receivedFilePreview: { location: 'string', maximumDimension: 'integer?' },
  locateReceivedFiles: { names: 'strings' },
  enableMulticast: {},
  requestNotificationPermission: {},
  setBackgroundMode: { enabled: 'boolean?', transferInProgress: 'boolean?' },
  showNotification: { id: 'string', title: 'string', body: 'string' },
  clearNotification: { id: 'string' },
  cryptoCreateIdentity: {},
  cryptoDeriveSharedKey: { publicKey: 'bytes' },
  cryptoEncrypt: { key: 'bytes', data: 'bytes' },
  cryptoDecrypt: { key: 'bytes', data: 'bytes' },
};

/** @type {Record<string, unknown>} */
const EMPTY = {
  string: '',
  boolean: true,
  integer: 256,
  bytes: { base64: '' },
  strings: [],
  list: [],
  null: null,
};

/**
 * Arguments to fill in.
 * @param {string} method
 */
export function skeleton(method) {
  const expected = Object.entries(METHODS[method] ?? {});
  if (expected.length === 0) return '';
  const filled = expected.map(([key, type]) => [key, EMPTY[type.replace('?', '')]]);
  return JSON.stringify(Object.fromEntries(filled), null, 2);
}
