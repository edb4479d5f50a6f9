// The list of received items.

import { platform } from './platform.js';

/** @param {number} bytes */
export function sizeText(bytes) {
  const units = ['bytes', 'kB', 'MB', 'GB', 'TB'];
  let unit = 0;
  let amount = bytes;
  while (amount >= 1000 && unit < units.length - 1) {
    amount /= 1000;
    unit += 1;
  }
  return `${unit === 0 ? amount : amount.toFixed(1)} ${units[unit]}`;
}

/**
 * @param {string} text
 * @param {() => void} onClick
 */
function button(text, onClick) {
  const element = document.createElement('button');
  element.type = 'button';
  element.textContent = text;
  element.addEventListener('click', onClick);
  return element;
}

/**
 * @param {string} className
 * @param {string} text
 */
function span(className, text) {
  const element = document.createElement('span');
  element.className = className;
  element.textContent = text;
  return element;
}

/**
 * @param {import('./platform.js').ReceivedFile} file
 * @param {(action: () => Promise<void>) => void} attempt runs an action and reports its failure
 */
export function receivedItem(file, attempt) {
  const item = document.createElement('li');
  const checked = (/** @type {() => Promise<void>} */ action) => attempt(async () => {
    item.classList.toggle('gone', !(await platform.receivedFileExists(file.location)));
    await action();
  });
  item.append(
    span('name', file.name),
    span('size', sizeText(file.size)),
    button('Open', () => checked(() => platform.openReceivedFile(file.location))),
    button('Reveal', () => checked(() => platform.revealReceivedFile(file.location))),
  );
  return item;
}
