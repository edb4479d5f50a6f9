// Building and changing the page. Text goes in as text, never as markup; a change that changes nothing
// touches nothing, so that what is drawn, focused or read aloud stays as it is.

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
 * @param {Node} target
 * @param {string} text
 */
export function setText(target, text) {
  if (target.textContent !== text) target.textContent = text;
}

/**
 * @param {HTMLElement} target
 * @param {boolean} isShown
 */
export function setShown(target, isShown) {
  if (target.hidden === isShown) target.hidden = !isShown;
}

/**
 * Shows an element where there is something to show in it.
 * @param {HTMLElement} target
 * @param {string | null} text
 */
export function showText(target, text) {
  setShown(target, Boolean(text));
  setText(target, text ?? '');
}

let lastId = 0;

/** An id for what others refer to by label or description. */
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
 * Changes a part of the page. Where that takes the focus away, the row it was in has it next, or the
 * row that took its place, or the whole part: never a button that does something else.
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
