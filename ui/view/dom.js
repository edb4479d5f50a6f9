// Builds and changes the page. Text is inserted as text, never as markup. A value that is
// already there is not written again, so that layout, focus and screen readers are not disturbed.

/** @typedef {string | number | boolean | null | undefined} Attribute absent where false or null */

/**
 * An element with its attributes, the listeners under `on` and its children.
 * @template {keyof HTMLElementTagNameMap} Tag
 * @param {Tag} tag
 * @param {{ on?: Record<string, (event: any) => void> } & Record<string, any>} [attributes]
 * @param {...(Node | string)} children
 * @returns {HTMLElementTagNameMap[Tag]}
 */
export function element(tag, { on = {}, ...attributes } = {}, ...children) {
  const made = document.createElement(tag);
  for (const [name, value] of Object.entries(attributes)) setAttribute(made, name, value);
  for (const [type, listener] of Object.entries(on)) made.addEventListener(type, listener);
  made.append(...children);
  return made;
}

/**
 * @param {Element} target
 * @param {string} name
 * @param {Attribute} value
 */
export function setAttribute(target, name, value) {
  if (value === null || value === undefined || value === false) {
    if (target.hasAttribute(name)) target.removeAttribute(name);
    return;
  }
  const text = value === true ? '' : String(value);
  if (target.getAttribute(name) !== text) target.setAttribute(name, text);
}

/**
 * Changes the text node that is there: a new one would have its styles resolved and be laid out anew.
 * @param {Node} target whose only child is a text, if it has any
 * @param {string} text
 */
export function setText(target, text) {
  const { firstChild } = target;
  if (!(firstChild instanceof Text)) target.textContent = text;
  else if (firstChild.data !== text) firstChild.data = text;
}

/**
 * @param {HTMLElement} target
 * @param {boolean} isShown
 */
export function setShown(target, isShown) {
  if (target.hidden === isShown) target.hidden = !isShown;
}

/**
 * Sets an element's text, and hides the element where there is none.
 * @param {HTMLElement} target
 * @param {string | null} text
 */
export function showText(target, text) {
  setShown(target, Boolean(text));
  setText(target, text ?? '');
}

let lastId = 0;

/** A unique id, for labels and descriptions. */
export const uniqueId = () => `element-${++lastId}`;

/**
 * A region of the page under a heading.
 * @param {string} className
 * @param {string} title
 * @param {...Node} children
 */
export function region(className, title, ...children) {
  const id = uniqueId();
  return element(
    'section',
    { class: className, 'aria-labelledby': id, tabindex: -1 },
    element('h2', { id }, title),
    ...children,
  );
}

/**
 * Changes a part of the page. If that removes the focused control, the focus goes to its row, else
 * to the row that took its place, else to the whole part: never to another button.
 * @param {HTMLElement} part
 * @param {() => void} change
 */
export function keepingFocus(part, change) {
  const focused = document.activeElement;
  if (!(focused instanceof HTMLElement) || focused === part || !part.contains(focused)) {
    change();
    return;
  }
  const rows = () => /** @type {HTMLElement[]} */ ([...part.querySelectorAll('[data-key]')]);
  const row = /** @type {HTMLElement | null} */ (focused.closest('[data-key]'));
  const index = row ? rows().indexOf(row) : -1;
  change();
  if (document.activeElement === focused) return;
  if (focused.isConnected && focused.checkVisibility()) focused.focus();
  if (document.activeElement === focused) return;
  const left = rows();
  const next =
    left.find(({ dataset }) => dataset.key === row?.dataset.key) ??
    left[Math.min(index, left.length - 1)];
  const target = next?.querySelector('[data-takes-focus]') ?? next ?? part;
  /** @type {HTMLElement} */ (target).focus();
}
