// A list whose rows stay the same elements while what they show changes.

import { setAttribute } from './dom.js';

/**
 * @template Item
 * @typedef {{ element: HTMLElement, update: (item: Item) => void, remove?: () => void }} Row
 */

/** @template Item */
export class KeyedList {
  /** @type {Map<string, Row<Item>>} */
  #rows = new Map();
  #container;
  #keyOf;
  #create;

  /**
   * @param {HTMLElement} container
   * @param {(item: Item) => string} keyOf
   * @param {(item: Item) => Row<Item>} create makes a row; its update is called before it is seen
   */
  constructor(container, keyOf, create) {
    this.#container = container;
    this.#keyOf = keyOf;
    this.#create = create;
  }

  /** @param {Item[]} items */
  update(items) {
    /** @type {Map<string, Row<Item>>} */
    const rows = new Map();
    for (const item of items) {
      const key = this.#freeKey(rows, item);
      const row = this.#rows.get(key) ?? this.#create(item);
      setAttribute(row.element, 'data-key', key);
      row.update(item);
      rows.set(key, row);
    }
    for (const [key, row] of this.#rows) {
      if (rows.has(key)) continue;
      row.remove?.();
      row.element.remove();
    }
    this.#rows = rows;
    this.#arrange();
  }

  /** Moves only what is out of place: an element that is moved loses the focus. */
  #arrange() {
    let place = this.#container.firstElementChild;
    for (const { element } of this.#rows.values()) {
      if (element === place) place = place.nextElementSibling;
      else this.#container.insertBefore(element, place);
    }
  }

  /**
   * @param {Map<string, Row<Item>>} taken
   * @param {Item} item
   */
  #freeKey(taken, item) {
    const key = this.#keyOf(item);
    let free = key;
    for (let number = 2; taken.has(free); ++number) free = `${key} (${number})`;
    return free;
  }
}
