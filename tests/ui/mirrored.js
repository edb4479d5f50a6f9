// A made-up language that is written from right to left, a third longer than English.

import { en } from './text/catalogue/en.js';

const LETTERS = 'ابتثجحخدذرزسشصضطظعغفقكلمنهوي';

const mirrored = (text) =>
  text
    .split(/(\{\w+\})/)
    .map((part) =>
      part.startsWith('{')
        ? part
        : part.replace(/[a-z]+/gi, (word) =>
            [...word, ...word.slice(0, Math.ceil(word.length / 3))]
              .map((letter) => LETTERS[letter.toLowerCase().charCodeAt(0) - 97])
              .join(''),
          ),
    )
    .join('');

export const MIRRORED = Object.fromEntries(
  Object.entries(en).map(([key, message]) => [
    key,
    typeof message === 'string'
      ? mirrored(message)
      : Object.fromEntries(Object.entries(message).map(([form, text]) => [form, mirrored(text)])),
  ]),
);
