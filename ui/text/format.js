// Sizes, rates, times and counts, for a person.

const UNITS = ['bytes', 'kB', 'MB', 'GB', 'TB', 'PB'];

/** @param {number} bytes in powers of 1000, as file managers here count */
export function sizeText(bytes) {
  let unit = 0;
  let amount = Math.max(0, bytes);
  while (amount >= 999.95 && unit < UNITS.length - 1) {
    amount /= 1000;
    unit += 1;
  }
  if (unit === 0) return amount === 1 ? '1 byte' : `${Math.round(amount)} bytes`;
  return `${amount.toFixed(1)} ${UNITS[unit]}`;
}

/** @param {number} bytesPerSecond */
export const rateText = (bytesPerSecond) => `${sizeText(bytesPerSecond)}/s`;

/**
 * Rounded up, so that there is never less time left than is shown.
 * @param {number} seconds
 */
export function durationText(seconds) {
  if (seconds < 60) return `${Math.max(1, Math.ceil(seconds))} s`;
  const minutes = Math.ceil(seconds / 60);
  if (minutes < 60) return `${minutes} min`;
  const hours = Math.floor(minutes / 60);
  if (hours < 24) return minutes % 60 === 0 ? `${hours} h` : `${hours} h ${minutes % 60} min`;
  return 'more than a day';
}

const TIME = new Intl.DateTimeFormat(undefined, { hour: 'numeric', minute: '2-digit' });
const DAY = new Intl.DateTimeFormat(undefined, { day: 'numeric', month: 'short' });

/**
 * The time of today, or the day and the time.
 * @param {number} when milliseconds since 1970
 * @param {number} now
 */
export function whenText(when, now) {
  const moment = new Date(when);
  const isToday = moment.toDateString() === new Date(now).toDateString();
  return isToday ? TIME.format(moment) : `${DAY.format(moment)}, ${TIME.format(moment)}`;
}

/**
 * @param {number} count
 * @param {string} one
 * @param {string} [many]
 */
export const countText = (count, one, many = `${one}s`) => `${count} ${count === 1 ? one : many}`;

/**
 * How much is done, as a share of one. What has no size is done when it is.
 * @param {{ bytesDone: number, bytesTotal: number }} transfer
 */
export function share({ bytesDone, bytesTotal }) {
  return bytesTotal > 0 ? Math.min(1, Math.max(0, bytesDone / bytesTotal)) : 0;
}
