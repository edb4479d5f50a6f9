// Devices that have the name of a known device but not its key.

import { isolated } from '../text/foreign_text.js';
import { words } from '../text/words.js';

/** @typedef {{ key: string, name: string }} Named with the key in hexadecimal */

/** The same for names that differ in case, width or accents only. @param {string} name */
const readAs = (name) =>
  name.normalize('NFKD').replace(/\p{M}/gu, '').toLowerCase().replace(/\s+/g, ' ').trim();

/**
 * The name to show for a device: never just the name of a known device for another key.
 * @param {Named} device
 * @param {Named[]} known
 */
export function distinctName({ key, name }, known) {
  if (known.some((one) => one.key === key)) return name;
  const isTaken = known.some((one) => readAs(one.name) === readAs(name));
  return isTaken ? words('device.notKnown', { name: isolated(name) }) : name;
}
