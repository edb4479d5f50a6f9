// The controls that can be seen on a page, and what they are called.

const textOf = (element) => element?.textContent.replace(/\s+/g, ' ').trim() ?? '';

/** What an element is called, by the order of accessible names. */
export function nameOf(element) {
  const by = element.getAttribute('aria-labelledby');
  if (by)
    return by
      .split(' ')
      .map((id) => textOf(document.getElementById(id)))
      .join(' ');
  return element.getAttribute('aria-label') || textOf(element.labels?.[0]) || textOf(element);
}

const CONTROLS =
  'button, input, textarea, progress, [role=switch], section, dialog, [tabindex="0"]';

export const shown = (root = document) =>
  [...root.querySelectorAll(CONTROLS)].filter(
    (element) => element.checkVisibility() && !element.closest('[inert]'),
  );
