// Keeps a click from hitting something that appeared while the person was about to click: what is under the
// pointer stays there, and controls that have just appeared ignore clicks for a second.

const PAUSE = 1000;
const CONTROLS = 'button, input, textarea, [tabindex="0"]';

/** A change this soon after a press counts as its result, in milliseconds. */
const REACTION = 700;

/** @type {{ x: number, y: number } | null} */
let pointer = null;
let pressed = -Infinity;
const track = (/** @type {PointerEvent} */ { type, clientX, clientY, timeStamp }) => {
  pointer = { x: clientX, y: clientY };
  if (type === 'pointerdown') pressed = timeStamp;
};
for (const type of /** @type {const} */ (['pointermove', 'pointerdown'])) {
  addEventListener(type, track, { capture: true, passive: true });
}
document.documentElement.addEventListener('pointerleave', () => {
  pointer = null;
});

/** @type {WeakMap<HTMLElement, ReturnType<typeof setTimeout>>} */
const timers = new WeakMap();
/** The controls that were not hidden after the last change of a part.
 *  @type {WeakMap<HTMLElement, Set<HTMLElement>>} */
const seenIn = new WeakMap();

/**
 * Changes a part of the page for a reason that is not this person's action.
 * @param {HTMLElement} part
 * @param {() => void} change
 */
export function bringIn(part, change) {
  const pointed = elementAtPointer();
  const top = pointed?.getBoundingClientRect().top ?? 0;
  change();
  if (pointed?.isConnected) scrollBack(pointed, pointed.getBoundingClientRect().top - top);
  const now = elementAtPointer();
  const control = /** @type {HTMLElement | null} */ (now?.closest(CONTROLS) ?? null);
  const isReaction = performance.now() - pressed < REACTION;
  if (control && control !== pointed?.closest(CONTROLS) && !isReaction) hold(control);
  holdNewControls(part);
}

/** @param {HTMLElement} part */
function holdNewControls(part) {
  const before = seenIn.get(part) ?? new Set();
  const controls = /** @type {HTMLElement[]} */ ([...part.querySelectorAll(CONTROLS)]);
  const seen = new Set(controls.filter((control) => !control.closest('[hidden]')));
  if (part.isConnected) for (const control of seen) if (!before.has(control)) hold(control);
  seenIn.set(part, seen);
}

/** @param {HTMLElement} control */
function hold(control) {
  if (control === document.activeElement) return;
  control.inert = true;
  clearTimeout(timers.get(control));
  timers.set(
    control,
    setTimeout(() => {
      control.inert = false;
    }, PAUSE),
  );
}

const elementAtPointer = () => (pointer ? document.elementFromPoint(pointer.x, pointer.y) : null);

/**
 * Scrolls so that an element is where it was, as far as there is room.
 * @param {Element} element
 * @param {number} distance
 */
function scrollBack(element, distance) {
  if (distance === 0) return;
  let scroller = element.parentElement;
  while (scroller && !['auto', 'scroll'].includes(getComputedStyle(scroller).overflowY)) {
    scroller = scroller.parentElement;
  }
  (scroller ?? document.scrollingElement)?.scrollBy({ top: distance, behavior: 'instant' });
}
