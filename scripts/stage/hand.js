// Uses the page as a person does, on a test's behalf: finds controls by what they are called. Orders
// are {press: NAME}, {write: [NAME, TEXT]}, {log: TEXT}, {pause: true} for the longest pause of the page in
// milliseconds since that was asked before, or {} to look; each answers what the page says and how it
// looks.

import { uiArguments } from './engine/application.js';
import { followOrders } from './orders.js';
import { nameOf, shown } from './accessible_names.js';

function control(name) {
  const found = shown().find((element) => nameOf(element).startsWith(name) && !element.disabled);
  if (!found) throw new Error(`nothing is called “${name}”: ${shown().map(nameOf)}`);
  return found;
}

const TICK = 10; // ms
let longest = 0;
let ticking;

/** How much later than it should a timer has fired, at most. */
function longestPause() {
  let last = performance.now();
  ticking ??= setInterval(() => {
    const now = performance.now();
    longest = Math.max(longest, now - last - TICK);
    last = now;
  }, TICK);
  const pause = longest;
  longest = 0;
  return pause;
}

function follow({ press, write, log }) {
  const at = Date.now();
  if (log) console.warn(log);
  if (press) control(press).click();
  if (write) {
    control(write[0]).value = write[1];
    control(write[0]).dispatchEvent(new Event('input', { bubbles: true }));
  }
  return at;
}

for (const argument of await uiArguments()) {
  if (!argument.startsWith('hand=')) continue;
  followOrders(argument.slice('hand='.length), async (order) => {
    if (order.pause) return { pause: longestPause() };
    let at = 0;
    try {
      at = follow(order);
    } catch (error) {
      return { error: error.message };
    }
    const { className, style } = document.documentElement;
    return {
      at,
      focus: nameOf(document.activeElement),
      text: document.body.innerText.replace(/\s+/g, ' '),
      looks: {
        isDark: matchMedia('(prefers-color-scheme: dark)').matches,
        classes: className,
        accent: style.getPropertyValue('--accent'),
      },
    };
  });
}
