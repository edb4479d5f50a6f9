// The desktop's high contrast and accent colour. The accent is adjusted until text in it is readable. Light
// or dark is `prefers-color-scheme`.

/** Contrast of text to its ground (WCAG 2.2, 1.4.3). */
const READABLE = 4.5;
const STEPS = 20;

/** @typedef {[number, number, number]} Rgb of 0 to 255 */

/** @param {Rgb} rgb */
function luminance(rgb) {
  const [red, green, blue] = rgb.map((part) => {
    const share = part / 255;
    return share <= 0.03928 ? share / 12.92 : ((share + 0.055) / 1.055) ** 2.4;
  });
  return 0.2126 * red + 0.7152 * green + 0.0722 * blue;
}

/**
 * @param {Rgb} one
 * @param {Rgb} other
 */
function contrast(one, other) {
  const [dark, light] = [luminance(one), luminance(other)].sort((left, right) => left - right);
  return (light + 0.05) / (dark + 0.05);
}

/**
 * The colour, moved towards another as far as it takes to be read on a ground.
 * @param {Rgb} color
 * @param {Rgb} towards
 * @param {Rgb} ground
 * @returns {Rgb}
 */
function readable(color, towards, ground) {
  const mixed = (/** @type {number} */ share) =>
    /** @type {Rgb} */ (color.map((part, at) => Math.round(part + (towards[at] - part) * share)));
  for (let step = 0; step < STEPS; ++step) {
    const one = mixed(step / STEPS);
    if (contrast(one, ground) >= READABLE) return one;
  }
  return towards;
}

/** @type {Rgb} */
const WHITE = [255, 255, 255];
/** @type {Rgb} */
const BLACK = [0, 0, 0];
/** The grounds in style.css on which the accent stands. @type {{ light: Rgb, dark: Rgb }} */
const GROUNDS = { light: [236, 236, 239], dark: [58, 58, 64] };

/**
 * The colours of an accent, by the names of their custom properties.
 * @param {string} accent such as “#3584e4”
 * @param {boolean} isDark
 * @returns {Record<string, string> | null} null for what is no colour
 */
export function accentColors(accent, isDark) {
  const parts = /^#([0-9a-f]{2})([0-9a-f]{2})([0-9a-f]{2})$/i.exec(accent);
  if (!parts) return null;
  const color = /** @type {Rgb} */ (parts.slice(1).map((part) => parseInt(part, 16)));
  const [away, ground] = isDark ? [WHITE, GROUNDS.dark] : [BLACK, GROUNDS.light];
  const shown = readable(color, away, ground);
  const more = /** @type {Rgb} */ (
    shown.map((part, at) => Math.round(part * 0.85 + away[at] * 0.15))
  );
  const on = contrast(shown, WHITE) >= contrast(shown, BLACK) ? WHITE : BLACK;
  const text = (/** @type {Rgb} */ rgb) => `rgb(${rgb.join(' ')})`;
  return { '--accent': text(shown), '--accent-more': text(more), '--on-accent': text(on) };
}

/**
 * Gives the page the desktop's contrast and accent, and keeps the accent readable as light and dark
 * change.
 * @returns {(appearance: import('../engine/application.js').Appearance) => void}
 */
export function followAppearance() {
  const { style, classList } = document.documentElement;
  const dark = matchMedia('(prefers-color-scheme: dark)');
  let accent = '';
  const show = () => {
    const colors = accentColors(accent, dark.matches);
    for (const name of ['--accent', '--accent-more', '--on-accent']) {
      if (colors) style.setProperty(name, colors[name]);
      else style.removeProperty(name);
    }
  };
  dark.addEventListener('change', show);
  return (appearance) => {
    accent = appearance.accent;
    classList.toggle('high-contrast', appearance.hasHighContrast);
    show();
  };
}
