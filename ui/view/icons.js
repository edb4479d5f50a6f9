// Symbolic icons: strokes on a grid of 16, in the colour of the text around them.

import { element } from './dom.js';

const SHAPES = {
  add: 'M8 3v10M3 8h10',
  check: 'M3 8.5 6.5 12 13 4.5',
  close: 'M4 4l8 8M12 4l-8 8',
  console: 'M2 3h12v10H2zM4.5 6l2 2-2 2M8.5 10.5h3',
  device: 'M2.5 3h11v7.5h-11zM6 13.5h4M8 10.5v3',
  file: 'M4 1.5h5.5L13 5v9.5H4zM9.5 1.5V5H13',
  files: 'M5.5 1.5h5L13.5 4.5v7h-8zM5.5 4.5h-3v10h8v-3',
  folder: 'M1.5 3h5L8 5h6.5v8.5h-13z',
  more: 'M3 8h.01M8 8h.01M13 8h.01',
  receive: 'M8 2v8.5M4.5 7 8 10.5 11.5 7M3 13.5h10',
  send: 'M8 10.5V2M4.5 5.5 8 2l3.5 3.5M3 13.5h10',
  settings: 'M2 4.5h7M13 4.5h1M2 11.5h1M7 11.5h7M9 2.5v4h4v-4zM3 9.5v4h4v-4z',
  text: 'M3 4V2.5h10V4M8 2.5v11M6 13.5h4',
  warning: 'M8 2 14.5 13.5h-13zM8 6.5v3M8 11.5h.01',
};

/** @typedef {keyof typeof SHAPES} IconName */

const SVG = 'http://www.w3.org/2000/svg';

/**
 * An icon, hidden from screen readers: the control around it has a name.
 * @param {IconName} name
 */
export function icon(name) {
  const picture = document.createElementNS(SVG, 'svg');
  picture.setAttribute('viewBox', '0 0 16 16');
  picture.setAttribute('class', 'icon');
  picture.setAttribute('aria-hidden', 'true');
  const path = document.createElementNS(SVG, 'path');
  path.setAttribute('d', SHAPES[name]);
  picture.append(path);
  return picture;
}

/**
 * Is shown in place of an empty list.
 * @param {IconName} picture
 * @param {string} [text]
 */
export function nothingYet(picture, text = '') {
  const words = element('p', {}, text);
  return { element: element('div', { class: 'nothing' }, icon(picture), words), words };
}
