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

/** The values that calls take and give, by the names that METHODS has for them. A question mark stands
 *  where a value may be absent or of another type.
 *  @typedef {{ null: null, string: string, 'string?': string | undefined, boolean: boolean,
 *              'boolean?': boolean, 'integer?': number, bytes: Uint8Array,
 *              'bytes?': Uint8Array | null, strings: string[], entries: SharedEntry[],
 *              received: ReceivedFile[], version: { version: string, buildNumber: string },
 *              'snapshot?': TransferSnapshot | null, 'snapshots?': TransferSnapshot[] }} Types */

/** The host's methods: what each takes, in order, and what it gives. */
export const METHODS = /** @type {const} */ ({
  deviceName: { takes: [], gives: 'string' },
  platformEventsReady: { takes: [], gives: 'null' },
  appSupportPath: { takes: [], gives: 'string' },
  appVersion: { takes: [], gives: 'version' },
  launchAtStartupEnabled: { takes: [], gives: 'boolean' },
  setLaunchAtStartup: { takes: [['enabled', 'boolean?']], gives: 'null' },
  updateDesktopShell: {
    takes: [
      ['visible', 'boolean?'],
      ['activeTransfer', 'snapshot?'],
      ['recentTransfers', 'snapshots?'],
    ],
    gives: 'null',
  },
  pickFiles: { takes: [], gives: 'entries' },
  pickFolder: { takes: [], gives: 'entries' },
  restorePickedFiles: { takes: [['paths', 'strings']], gives: 'null' },
  releasePickedFiles: { takes: [['paths', 'strings']], gives: 'null' },
  prepareReceiveLocation: { takes: [], gives: 'boolean' },
  writeClipboardText: { takes: [['text', 'string']], gives: 'null' },
  openExternalUrl: { takes: [['url', 'string']], gives: 'null' },
  openReceiveFolder: { takes: [], gives: 'null' },
  setReceiveFolderName: { takes: [['name', 'string']], gives: 'null' },
  temporaryReceivePath: { takes: [['name', 'string']], gives: 'string' },
  publishReceivedFile: {
    takes: [
      ['path', 'string'],
      ['name', 'string?'],
      ['relativePath', 'string?'],
    ],
    gives: 'string',
  },
  publishReceivedDirectory: { takes: [['relativePath', 'string']], gives: 'string' },
  receivedFileExists: { takes: [['location', 'string']], gives: 'boolean' },
  openReceivedFile: { takes: [['location', 'string']], gives: 'null' },
  revealReceivedFile: { takes: [['location', 'string']], gives: 'null' },
  receivedFilePreview: {
    takes: [
      ['location', 'string'],
      ['maximumDimension', 'integer?'],
    ],
    gives: 'bytes?',
  },
  locateReceivedFiles: { takes: [['names', 'strings']], gives: 'received' },
  enableMulticast: { takes: [], gives: 'null' },
  requestNotificationPermission: { takes: [], gives: 'boolean' },
  setBackgroundMode: {
    takes: [
      ['enabled', 'boolean?'],
      ['transferInProgress', 'boolean?'],
    ],
    gives: 'null',
  },
  showNotification: {
    takes: [
      ['id', 'string'],
      ['title', 'string'],
      ['body', 'string'],
    ],
    gives: 'null',
  },
  clearNotification: { takes: [['id', 'string']], gives: 'null' },
  cryptoCreateIdentity: { takes: [], gives: 'bytes' },
  cryptoDeriveSharedKey: { takes: [['publicKey', 'bytes']], gives: 'bytes' },
  cryptoEncrypt: {
    takes: [
      ['key', 'bytes'],
      ['data', 'bytes'],
    ],
    gives: 'bytes',
  },
  cryptoDecrypt: {
    takes: [
      ['key', 'bytes'],
      ['data', 'bytes'],
    ],
    gives: 'bytes',
  },
});

/** @typedef {readonly (readonly [string, keyof Types])[]} Takes */
/**
 * @template {Takes} T
 * @typedef {{ -readonly [At in keyof T]: Types[T[At][1]] }} InOrder
 */
/**
 * @template {Takes} T
 * @typedef {{ [One in T[number] as One[1] extends `${string}?` ? never : One[0]]: Types[One[1]] } &
 *           { [One in T[number] as One[1] extends `${string}?` ? One[0] : never]?: Types[One[1]] }} ByName
 */
/** @typedef {typeof METHODS} Methods */
/** @typedef {{ [M in keyof Methods]:
 *    (...args: InOrder<Methods[M]['takes']> | [ByName<Methods[M]['takes']>]) =>
 *      Promise<Types[Methods[M]['gives']]> }} Platform */

/**
 * The host's methods as functions. Each takes its arguments in order; one with several also takes them
 * as one object.
 */
export const platform = /** @type {Platform} */ (
  Object.fromEntries(
    Object.entries(METHODS).map(([method, { takes }]) => [
      method,
      (/** @type {any[]} */ ...given) => channel.invokeMethod(method, argumentsOf(takes, given)),
    ]),
  )
);

/**
 * @param {Takes} takes
 * @param {any[]} given
 */
function argumentsOf(takes, given) {
  if (takes.length === 0) return null;
  if (takes.length > 1 && given.length === 1) return given[0];
  return Object.fromEntries(takes.map(([name], at) => [name, given[at]]));
}

/**
 * Calls any method by name.
 * @param {string} method
 * @param {unknown} args
 */
export const invoke = (method, args) => channel.invokeMethod(method, args);

/** A call of the host, with the arguments as its detail. It counts as handled after all that it was
 *  told to wait for. */
export class HostEvent extends CustomEvent {
  /** @type {Promise<unknown>[]} */
  handling = [];

  /** @param {Promise<unknown>} handling */
  waitUntil(handling) {
    this.handling.push(handling);
  }
}

/** The host's events: “sharedEntries”, “filesDropped”, “dragActiveChanged” and
 *  “discoveryRecoveryRequested”, each a HostEvent. Those that came before listenToPlatform are
 *  delivered by it. */
export const platformEvents = new EventTarget();

export function listenToPlatform() {
  channel.setMethodCallHandler((method, detail) => {
    const event = new HostEvent(method, { detail });
    platformEvents.dispatchEvent(event);
    return Promise.all(event.handling);
  });
}
