// Symbolic icons: strokes on a grid of 16, in the colour of the text around them.

import { element } from './dom.js';

const SHAPES = {
  add: 'M8 3v10M3 8h10',
  check: 'M3 8.5 6.5 12 13 4.5',
  close: 'M4 4l8 8M12 4l-8 8',
  console: 'M2 3h12v10H2zM4.5 6l2 2-2 2M8.5 10.5h3',
  device: 'M2.5 3h11v7.5h-11zM6 13.5h4M8 10.5v3',
  archive: 'M2.5 2h11v3.5h-11zM3.5 5.5v8.5h9V5.5M6.5 8.5h3',
  bin: 'M2.5 4.5h11M6 4.5v-2h4v2M4 4.5l.7 9.5h6.6l.7-9.5M6.7 7v4.5M9.3 7v4.5',
  file: 'M4 1.5h5.5L13 5v9.5H4zM9.5 1.5V5H13',
  files: 'M5.5 1.5h5L13.5 4.5v7h-8zM5.5 4.5h-3v10h8v-3',
  folder: 'M1.5 3h5L8 5h6.5v8.5h-13z',
  image: 'M2 3h12v10H2zM2 11l3.5-3.5L9 11l2-2 3 3M10.5 6h.01',
  menu: 'M2.5 4h11M2.5 8h11M2.5 12h11',
  more: 'M3 8h.01M8 8h.01M13 8h.01',
  music:
    'M6 12V3l7-1.5V10.5M6 12a2 1.7 0 1 1-4 0 2 1.7 0 0 1 4 0zM13 10.5a2 1.7 0 1 1-4 0 2 1.7 0 0 1 4 0z',
  page: 'M4 1.5h5.5L13 5v9.5H4zM9.5 1.5V5H13M6 8h5M6 10.5h5',
  receive: 'M8 2v8.5M4.5 7 8 10.5 11.5 7M3 13.5h10',
  send: 'M8 10.5V2M4.5 5.5 8 2l3.5 3.5M3 13.5h10',
  settings: 'M2 4.5h7M13 4.5h1M2 11.5h1M7 11.5h7M9 2.5v4h4v-4zM3 9.5v4h4v-4z',
  table: 'M2 3h12v10H2zM2 6.5h12M2 10h12M6 3v10',
  text: 'M3 4V2.5h10V4M8 2.5v11M6 13.5h4',
  video: 'M1.5 4h9v8h-9zM10.5 7l4-2v6l-4-2',
  warning: 'M8 2 14.5 13.5h-13zM8 6.5v3M8 11.5h.01',
};

/** @typedef {keyof typeof SHAPES} IconName */

/** Which icon stands for what, by the end of a file's name. @type {[IconName, string][]} */
const TYPES = [
  ['image', 'avif bmp gif heic heif jpeg jpg png raw svg tif tiff webp'],
  ['music', 'aac flac m4a mid mp3 oga ogg opus wav wma'],
  ['video', 'avi m4v mkv mov mp4 mpeg mpg ogv webm wmv'],
  ['archive', '7z bz2 deb gz iso rar rpm tar tgz xz zip zst'],
  ['page', 'doc docx epub htm html md odp odt pdf pptx ps rtf tex txt'],
  ['table', 'csv ods xls xlsx'],
];
const ICON_OF = new Map(TYPES.flatMap(([name, ends]) => ends.split(' ').map((end) => [end, name])));

/**
 * The icon of an item by its kind and name.
 * @param {{ kind: string, name: string }} item
 * @returns {IconName}
 */
export function iconOf({ kind, name }) {
  if (kind === 'directory') return 'folder';
  if (kind === 'text') return 'text';
  return ICON_OF.get(name.slice(name.lastIndexOf('.') + 1).toLowerCase()) ?? 'file';
}

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
