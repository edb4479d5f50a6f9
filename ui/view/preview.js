// The thumbnail of a received item.

import { element } from './dom.js';

const SIDE = 56;

/**
 * Replaces the icon by the picture once it is loaded.
 * @param {HTMLElement} frame holds the stand-in
 * @param {(maximumDimension: number) => Promise<Uint8Array | null>} read PNG
 * @returns {() => void} lets go of the picture
 */
export function showPreview(frame, read) {
  /** @type {string | null} */
  let url = null;
  let isGone = false;
  const show = async () => {
    const bytes = await read(Math.ceil(SIDE * devicePixelRatio));
    if (!bytes || isGone) return;
    url = URL.createObjectURL(new Blob([bytes.slice()], { type: 'image/png' }));
    const picture = element('img', { src: url, alt: '' });
    await picture.decode();
    if (!isGone) frame.replaceChildren(picture);
  };
  show().catch(() => {}); // the stand-in stays
  return () => {
    isGone = true;
    if (url) URL.revokeObjectURL(url);
  };
}
