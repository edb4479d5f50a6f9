// Sizes, rates, times and counts, for a person.

import { dateText, numberText } from './locale.js';
import { words } from './words.js';

const UNITS = ['byte', 'kilobyte', 'megabyte', 'gigabyte', 'terabyte', 'petabyte'];

/** @param {number} bytes in powers of 1000, as file managers here count */
export function sizeText(bytes) {
  let unit = 0;
  let amount = Math.max(0, bytes);
  while (amount >= 999.95 && unit < UNITS.length - 1) {
    amount /= 1000;
    unit += 1;
  }
  if (unit === 0) return words('size.bytes', { count: Math.round(amount) });
  return unitText(amount, UNITS[unit], 1);
}

/**
 * @param {number} amount
 * @param {string} unit of CLDR
 * @param {number} [digits] after the point
 */
export const unitText = (amount, unit, digits = 0) =>
  numberText(amount, {
    style: 'unit',
    unit,
    unitDisplay: 'short',
    minimumFractionDigits: digits,
    maximumFractionDigits: digits,
  });

/** @param {number} bytesPerSecond */
export const rateText = (bytesPerSecond) => words('size.rate', { size: sizeText(bytesPerSecond) });

/**
 * Rounded up, so that there is never less time left than is shown.
 * @param {number} seconds
 */
export function durationText(seconds) {
  if (seconds < 60) return unitText(Math.max(1, Math.ceil(seconds)), 'second');
  const minutes = Math.ceil(seconds / 60);
  if (minutes < 60) return unitText(minutes, 'minute');
  const hours = Math.floor(minutes / 60);
  if (hours >= 24) return words('time.long');
  const left = minutes % 60;
  const parts = [unitText(hours, 'hour'), ...(left > 0 ? [unitText(left, 'minute')] : [])];
  return parts.join(' ');
}

/** @param {number} part of one, rounded down: it is all there only at the end */
export const percentText = (part) =>
  numberText(Math.floor(part * 100) / 100, { style: 'percent', maximumFractionDigits: 0 });

/**
 * The time of today, or the day and the time; the year where it is another one.
 * @param {number} when milliseconds since 1970
 * @param {number} now
 */
export function whenText(when, now) {
  const moment = new Date(when);
  const today = new Date(now);
  const clock = /** @type {const} */ ({ hour: 'numeric', minute: '2-digit' });
  if (moment.toDateString() === today.toDateString()) return dateText(moment, clock);
  const isThisYear = moment.getFullYear() === today.getFullYear();
  return isThisYear
    ? dateText(moment, { day: 'numeric', month: 'short', ...clock })
    : dayText(when);
}

/** @param {number} when milliseconds since 1970 */
export const dayText = (when) =>
  dateText(new Date(when), { day: 'numeric', month: 'short', year: 'numeric' });

/**
 * The first of some names, and how many more there are.
 * @param {string} first
 * @param {number} count of all
 */
export const firstOf = (first, count) =>
  count > 1 ? words('list.more', { first, count: count - 1 }) : first;

/**
 * How much is done, as a share of one. What has no size is done when it is.
 * @param {{ bytesDone: number, bytesTotal: number }} transfer
 */
export function share({ bytesDone, bytesTotal }) {
  return bytesTotal > 0 ? Math.min(1, Math.max(0, bytesDone / bytesTotal)) : 0;
}
