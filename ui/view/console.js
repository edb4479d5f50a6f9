// The developer console: calls the host's methods by hand, and shows its events.

import { unitText } from '../text/format.js';
import { dateText } from '../text/locale.js';
import { words } from '../text/words.js';
import { button } from './controls.js';
import { methodNames, skeleton } from './console_methods.js';
import { errorText, objection, parseArguments, valueText } from './console_values.js';
import { element, region, uniqueId } from './dom.js';
import { withCtrl } from './shortcuts.js';

/**
 * @typedef {{ invoke: (method: string, args: unknown) => Promise<unknown>,
 *             listen: (heard: (event: string, args: unknown) => void) => void }} ConsoleHost
 */

const MOST_ENTRIES = 200;

/**
 * @param {'reply' | 'error' | 'event'} kind
 * @param {string} title
 * @param {string} aside
 * @param {[string, string][]} texts each with what it is
 */
function entry(kind, title, aside, texts) {
  const made = element(
    'li',
    { class: `entry ${kind}` },
    element(
      'div',
      { class: 'entry-head' },
      element('strong', {}, title),
      element('span', { class: 'faint' }, aside),
    ),
  );
  for (const [label, text] of texts) {
    if (text !== '')
      made.append(
        element(
          'pre',
          { role: 'group', 'aria-label': label, 'data-label': label, tabindex: 0 },
          text,
        ),
      );
  }
  return made;
}

/** @param {number} milliseconds whole ones: the engine's clock tells pages no more */
const durationText = (milliseconds) =>
  milliseconds < 1
    ? words('console.quick', { time: unitText(1, 'millisecond') })
    : unitText(Math.round(milliseconds), 'millisecond');

/**
 * @param {ConsoleHost} host
 * @param {import('./notices.js').Notices} notices
 */
export function consoleView(host, notices) {
  const [methodId, argumentsId, namesId] = [uniqueId(), uniqueId(), uniqueId()];
  const method = element('input', {
    id: methodId,
    list: namesId,
    autocomplete: 'off',
    spellcheck: 'false',
    required: true,
  });
  const names = element(
    'datalist',
    { id: namesId },
    ...methodNames.map((name) => element('option', { value: name })),
  );
  const typed = element('textarea', {
    id: argumentsId,
    rows: 4,
    spellcheck: 'false',
    placeholder: words('console.format', { example: '{"base64": "…"}' }),
  });
  const entries = element('ol', {
    class: 'entries',
    role: 'list',
    'aria-label': words('console.entries'),
  });
  const form = element(
    'form',
    { class: 'console-form' },
    element('label', { for: methodId }, words('console.method')),
    method,
    names,
    element('label', { for: argumentsId }, words('console.arguments')),
    typed,
    element(
      'div',
      { class: 'actions' },
      element(
        'button',
        { class: 'main', title: withCtrl(words('key.enter')) },
        words('console.call'),
      ),
      button(words('console.clear'), () => entries.replaceChildren()),
    ),
  );

  /** @param {HTMLElement} made */
  const add = (made) => {
    entries.prepend(made);
    while (entries.childElementCount > MOST_ENTRIES) entries.lastElementChild?.remove();
  };
  const call = async () => {
    const name = method.value.trim();
    const given = typed.value.trim();
    const start = performance.now();
    try {
      const args = parseArguments(given);
      const refused = objection(name, args);
      if (refused) throw new Error(refused);
      const reply = await host.invoke(name, args);
      const time = durationText(performance.now() - start);
      add(
        entry('reply', name, time, [
          [words('console.calledWith'), given],
          [words('console.reply'), valueText(reply)],
        ]),
      );
      notices.speak([words('console.answered', { method: name, time })]);
    } catch (error) {
      const time = durationText(performance.now() - start);
      add(
        entry('error', name, time, [
          [words('console.calledWith'), given],
          [words('console.error'), errorText(error)],
        ]),
      );
      notices.speak([words('console.failed', { method: name })]);
    }
  };

  let suggested = '';
  method.addEventListener('input', () => {
    if (!methodNames.includes(method.value) || typed.value !== suggested) return;
    typed.value = suggested = skeleton(method.value);
  });
  form.addEventListener('submit', (event) => {
    event.preventDefault();
    call();
  });
  typed.addEventListener('keydown', (event) => {
    if (event.key !== 'Enter' || !event.ctrlKey) return;
    event.preventDefault();
    form.requestSubmit();
  });
  host.listen((event, args) =>
    add(
      entry('event', event, dateText(new Date(), { timeStyle: 'medium' }), [
        [words('console.event'), valueText(args)],
      ]),
    ),
  );
  return region(
    'console',
    words('console.title'),
    element('div', { class: 'card' }, form),
    entries,
  );
}
