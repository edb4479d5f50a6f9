// What is dragged over the window, and what becomes of it when it is dropped.

import { isolated, plainName } from '../text/foreign_text.js';
import { words } from '../text/words.js';
import { itemOf, measured } from './items.js';

/** @typedef {import('../engine/application.js').Drag} Drag */
/** In pixels of the page. @typedef {{ x: number, y: number }} Place */

/** Dispatches “change” when `drag` is replaced. */
export class Dropping extends EventTarget {
  #choosing;
  #sending;
  #suggestions;
  #zoom;
  /** Where something was dropped whose files are still to come. @type {Place | null} */
  #place = null;

  /** What is dragged over the window. @type {Drag | null} */
  drag = null;
  /** The device that is shown at a place, by its id; the view of the devices sets it.
   *  @type {(place: Place) => string | null} */
  deviceAt = () => null;

  /**
   * @param {import('./choosing.js').Choosing} choosing
   * @param {import('./sending.js').Sending} sending
   * @param {import('./suggestions.js').Suggestions} suggestions
   * @param {() => number} zoom in percent
   */
  constructor(choosing, sending, suggestions, zoom) {
    super();
    this.#choosing = choosing;
    this.#sending = sending;
    this.#suggestions = suggestions;
    this.#zoom = zoom;
  }

  /** @param {boolean} isOver whether files are dragged over the window */
  over(isOver) {
    if (!isOver) this.#replace(null);
    else if (!this.drag) this.#replace({ x: -1, y: -1, hasFiles: true, folders: [] });
  }

  /** @param {Drag} drag */
  moved(drag) {
    this.#replace(this.#onThePage(drag));
  }

  /** What is dragged has left the window. Folders alone also leave where they are dropped: they are refused. */
  left() {
    if (this.drag && !this.drag.hasFiles) this.#tellOfFolders(this.drag.folders);
    this.#replace(null);
  }

  /** @param {Drag} drag whose files come next */
  dropped(drag) {
    this.#place = this.#onThePage(drag);
    this.#replace(null);
    this.#tellOfFolders(drag.folders);
  }

  /**
   * Takes dropped files: sends them to the device on which they were dropped, or adds them to the outbox
   * where that was none, or one that has just left.
   * @param {import('../platform.js').SharedEntry[]} entries
   */
  async take(entries) {
    const deviceId = this.#place && this.deviceAt(this.#place);
    this.#place = null;
    if (!deviceId) return this.#choosing.add(entries);
    const items = entries.map(itemOf);
    const measures = await measured(items);
    try {
      await this.#sending.sendOnly(
        deviceId,
        items.map((item) => measures.get(item) ?? item),
      );
    } catch (error) {
      await this.#choosing.add(entries);
      if (error instanceof Error) this.#suggestions.offer({ text: error.message });
    }
  }

  /**
   * @param {Drag} drag
   * @returns {Drag} with its place in pixels of the page
   */
  #onThePage(drag) {
    const scale = this.#zoom() / 100;
    return { ...drag, x: drag.x / scale, y: drag.y / scale };
  }

  /** @param {string[]} folders that were left out */
  #tellOfFolders(folders) {
    if (folders.length === 0) return;
    this.#suggestions.offer({
      text: words('drop.leftOut', {
        names: folders.map((name) => isolated(plainName(name))),
        count: folders.length,
      }),
      label: words('send.addFolder'),
      run: () => this.#choosing.pickFolder(),
    });
  }

  /** @param {Drag | null} drag */
  #replace(drag) {
    this.drag = drag;
    this.dispatchEvent(new Event('change'));
  }
}
