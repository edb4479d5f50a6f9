// A list that keeps the element of each row while its content changes.

import { setAttribute } from './dom.js';

/**
 * @template Item
 * @typedef {{ element: HTMLElement, update: (item: Item) => void, remove?: () => void }} Row
 */

/** @template Item */
export class KeyedList {
  /** @type {Map<string, { item: Item, row: Row<Item> }>} */
  #rows = new Map();
  /** @type {Item[]} */
  #items = [];
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

  /** @param {Item[]} items replaced where they change, never mutated */
  update(items) {
    const before = this.#items;
    this.#items = items;
    if (items.length === before.length && items.every((item, at) => item === before[at])) return;
    /** @type {Map<string, { item: Item, row: Row<Item> }>} */
    const rows = new Map();
    for (const item of items) {
      const key = this.#freeKey(rows, item);
      const known = this.#rows.get(key);
      const row = known?.row ?? this.#create(item);
      setAttribute(row.element, 'data-key', key);
      if (known?.item !== item) row.update(item);
      rows.set(key, { item, row });
    }
    for (const [key, { row }] of this.#rows) {
      if (rows.has(key)) continue;
      row.remove?.();
      row.element.remove();
    }
    this.#rows = rows;
    this.#arrange();
  }

  /** Moves only the rows that are out of place: moving an element removes its focus. */
  #arrange() {
    let place = this.#container.firstElementChild;
    for (const { row } of this.#rows.values()) {
      const { element } = row;
      if (element === place) place = place.nextElementSibling;
      else this.#container.insertBefore(element, place);
    }
  }

  /**
   * @param {Map<string, unknown>} taken
   * @param {Item} item
   */
  #freeKey(taken, item) {
    const key = this.#keyOf(item);
    let free = key;
    for (let number = 2; taken.has(free); ++number) free = `${key} (${number})`;
    return free;
  }
}
