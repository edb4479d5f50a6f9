// The announcements that devices send to everybody on the network: one small JSON object in a datagram.

import { hex, jsonBytes, objectOf, unhex } from './bytes.js';
import { Limit, VERSION } from './limits.js';
import { plainName, shortened } from '../text/foreign_text.js';

const KEY = 65;
const DEVICE_ID = /^[0-9a-f]{8}(-[0-9a-f]{4}){3}-[0-9a-f]{12}$/;

/** @typedef {'here' | 'query' | 'bye'} Kind */
/** @typedef {{ kind: 'query' } |
 *             { kind: 'here' | 'bye', id: string, name: string, port: number, key: Uint8Array }} Announcement */

/** @param {unknown} id */
export const isDeviceId = (id) => typeof id === 'string' && DEVICE_ID.test(id);

/**
 * The name of another device, made safe to show.
 * @param {unknown} name
 */
export function cleanName(name) {
  const plain = typeof name === 'string' ? plainName(name) : '';
  return /[^_]/.test(plain) ? shortened(plain, Limit.nameCharacters) : 'Unnamed device';
}

/**
 * @param {Announcement} announcement
 * @returns {Uint8Array}
 */
export function encodeAnnouncement(announcement) {
  if (announcement.kind === 'query') return jsonBytes({ brevanholt: VERSION, kind: 'query' });
  const { kind, id, port, key } = announcement;
  for (let name = [...announcement.name]; ; name = name.slice(0, -1)) {
    const bytes = jsonBytes({
      brevanholt: VERSION,
      kind,
      id,
      name: name.join(''),
      port,
      key: hex(key),
    });
    if (bytes.length <= Limit.datagram) return bytes;
  }
}

/**
 * Null for anything that is not an announcement of this version.
 * @param {Uint8Array} datagram
 * @returns {Announcement | null}
 */
export function decodeAnnouncement(datagram) {
  if (datagram.length > Limit.datagram) return null;
  let said;
  try {
    said = objectOf(datagram);
  } catch {
    return null;
  }
  if (said.brevanholt !== VERSION) return null;
  if (said.kind === 'query') return { kind: 'query' };
  const key = unhex(said.key, KEY);
  const isPort = Number.isInteger(said.port) && said.port > 0 && said.port < 65536;
  if ((said.kind !== 'here' && said.kind !== 'bye') || !isDeviceId(said.id) || !isPort || !key) {
    return null;
  }
  return { kind: said.kind, id: said.id, name: cleanName(said.name), port: said.port, key };
}
