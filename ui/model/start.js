// Starts the application: loads the documents and hears the host's events. Only a host that does not
// answer keeps it from starting.

import { platform, platformEvents, listenToPlatform } from '../platform.js';
import { digest, fingerprintOf, hex } from '../protocol/bytes.js';
import { sweepScratchArea } from '../protocol/scratch_area.js';
import { listText } from '../text/locale.js';
import { isKey, words } from '../text/words.js';
import { Application } from './application.js';
import { Documents } from './documents.js';
import { Outbox } from './outbox.js';
import { sweepReceivedTexts } from './received.js';
import { fittingValues, isText } from './schema.js';
import { loadSettings } from './settings.js';
import { Transfers } from './transfers.js';
import { Trust } from './trust.js';

const DOCUMENT = 'device';

/** @returns {Promise<Application>} */
export async function startApplication() {
  const documents = new Documents(await platform.appSupportPath().catch((error) => error));
  const [name, { version }, identity] = await Promise.all([
    platform.deviceName(),
    platform.appVersion(),
    platform.cryptoCreateIdentity().catch((error) => error),
  ]);
  const isIdentified = identity instanceof Uint8Array;
  const key = isIdentified ? identity : new Uint8Array();
  const id = await deviceId(documents, key);
  await sweepScratchArea(Date.now()).catch((error) => console.warn(error));
  const [trust, transfers, settings, outbox] = await Promise.all([
    Trust.load(documents),
    Transfers.load(documents),
    loadSettings(documents),
    Outbox.load(documents),
  ]);
  await sweepReceivedTexts(transfers).catch((error) => console.warn(error));
  const application = new Application({
    documents,
    trust,
    transfers,
    settings,
    outbox,
    party: { id, name: settings.deviceName || name, key },
    self: { name, fingerprint: await fingerprintOf(key), version },
    damage: damageText(documents),
    problem: isIdentified ? null : words('network.noIdentity', { why: identity.message }),
  });
  listen(application);
  await application.begin();
  await platform.platformEventsReady();
  return application;
}

/**
 * This device's id. It follows from the key, so that a lost document does not change it.
 * @param {Documents} documents
 * @param {Uint8Array} key
 */
async function deviceId(documents, key) {
  const stored = await documents.load(DOCUMENT, (content) =>
    fittingValues(DOCUMENT, content, { id: isText }),
  );
  if (stored?.id) return stored.id;
  const id = hex(await digest('Brevanholt device', key))
    .slice(0, 32)
    .replace(/^(.{8})(.{4})(.{4})(.{4})(.{12})$/, '$1-$2-$3-$4-$5');
  await documents.save(DOCUMENT, { id }).catch(() => {});
  return id;
}

/** @param {Documents} documents */
function damageText({ damaged, missing }) {
  if (missing) return words('damage.nothingKept', { why: missing.message });
  if (damaged.size === 0) return null;
  const names = [...damaged].map(([name, place]) =>
    words('list.quoted', { name: place ?? `${name}.json` }),
  );
  const consequences = [...damaged.keys()].flatMap((name) => {
    const key = `damage.${name}`;
    return isKey(key) ? words(key) : [];
  });
  return consequences.length > 0
    ? words('damage.because', { consequences: listText(consequences), names })
    : words('damage.all', { names });
}

/** @param {Application} application */
function listen(application) {
  const on = (/** @type {string} */ name, /** @type {(detail: any) => unknown} */ hear) =>
    platformEvents.addEventListener(name, (event) => {
      const host = /** @type {import('../platform.js').HostEvent} */ (event);
      const handling = (async () => hear(host.detail))();
      // The host keeps what was handed in until this application has saved it.
      host.waitUntil(handling.catch((error) => console.error(error)));
    });
  const take = (/** @type {any} */ entries) => {
    if (Array.isArray(entries)) return application.choosing.add(entries);
  };
  on('sharedEntries', take);
  on('filesDropped', (entries) => {
    application.dropping.over(false);
    if (Array.isArray(entries)) return application.dropping.take(entries);
  });
  on('dragActiveChanged', (isActive) => application.dropping.over(isActive === true));
  on('discoveryRecoveryRequested', () => application.recover());
  listenToPlatform();
}
