// What documents and names promise whatever stands in them.

import { list, replace } from './engine/files.js';
import { equal } from './harness.js';
import { Documents } from './model/documents.js';
import { contentFields } from './model/contents.js';
import { failureFields } from './model/outcomes.js';
import { Outbox } from './model/outbox.js';
import { loadSettings } from './model/settings.js';
import { Transfers } from './model/transfers.js';
import { platform } from './platform.js';
import { OUTBOX, RECENTS } from './sample_state.js';
import { de } from './text/catalogue/de.js';
import { en } from './text/catalogue/en.js';
import { excerpt, isolated, plainFileName, plainPath, shortened } from './text/foreign_text.js';
import { sizeText, whenText } from './text/format.js';
import { speak, words } from './text/words.js';
import { statusText } from './view/transfer_words.js';

const folder = await platform.appSupportPath();
const write = (name, text) => replace(`${folder}/${name}.json`, new TextEncoder().encode(text));
const document = (content) => JSON.stringify({ version: 1, content });
const without = (object, key) => ({ ...object, [key]: undefined });

export const savedChecks = {
  async anEntryThatDoesNotFitIsLeftOutAlone() {
    const documents = new Documents(folder);
    const misfits = [null, 7, [], { id: 'x' }, without(RECENTS[0], 'locations')];
    const odd = { ...RECENTS[1], when: 'today', items: [null] };
    await write('transfers', document([...misfits, RECENTS[0], odd, RECENTS[2]]));
    await write('outbox', document([OUTBOX[0], { ...OUTBOX[1], size: '9' }, null, OUTBOX[3]]));
    const { list: transfers } = await Transfers.load(documents);
    equal(
      transfers.map(({ id }) => id),
      ['r1', 'r3'],
    );
    equal(await Outbox.load(documents), [OUTBOX[0], OUTBOX[3]]);
    equal(documents.damaged.size, 0);
  },

  async aDamagedDocumentIsKeptAndTheDeviceHides() {
    const texts = ['{"isVisible"', document([]), JSON.stringify({ version: 2, content: {} })];
    for (const text of [...texts, document({ isVisible: 'yes' })]) {
      const documents = new Documents(folder);
      await write('settings', text);
      equal((await loadSettings(documents)).isVisible, false);
      equal((await loadSettings(new Documents(folder))).isVisible, false);
      equal(documents.damaged.has('settings'), texts.includes(text));
    }
    const names = await list(folder);
    equal(names.filter((name) => name.startsWith('settings.damaged-')).length, texts.length);
  },

  async whatIsShownIsSaved() {
    await write('outbox', document([]));
    const documents = new Documents(folder);
    const outbox = new Outbox(documents, [], () => []);
    const saved = [];
    outbox.addEventListener('change', () =>
      saved.push(Outbox.load(new Documents(folder)).then((items) => [items, outbox.items])),
    );
    await Promise.all([outbox.addText('one'), outbox.addText('two')]);
    for (const [onDisk, shown] of await Promise.all(saved)) {
      equal(
        shown.every((item) => onDisk.some(({ text }) => text === item.text)),
        true,
      );
    }
    equal(
      outbox.items.map(({ text }) => text),
      ['one', 'two'],
    );
  },

  namesCannotLie() {
    equal(plainFileName('invoice_\u202Efdp.exe'), 'invoice_fdp.exe');
    equal(plainPath('a\\b/c:d/.\u200B./\u2800\u3164/line\nline'), 'a_b/c_d/__/__/line_line');
    equal(plainFileName(`e${'\u0301'.repeat(60)}`).length, 6);
    for (const name of ['👨‍👩‍👧 ❤️ 1️⃣', 'می‌خواهم', 'क्‍ष', 'a  b.txt'])
      equal(plainFileName(name), name);
    equal(new TextEncoder().encode(plainFileName(`${'é'.repeat(300)}.pdf`)).length <= 255, true);
    equal(shortened(`${'x'.repeat(90)}.exe`, 20), 'xxxxxxxxxxxxx…xx.exe');
    equal(excerpt('one\u2028two\r\nthr\u0007ee', 99, 2), 'one\ntwo…');
    equal([isolated('Bob'), isolated('محمود')], ['Bob', '\u2066محمود\u2069']);
  },

  async anOfferNamesEverythingAtTheTop() {
    const items = [
      'holiday.jpg',
      ...Array.from({ length: 40 }, (_, at) => `Work/evil${at}.sh`),
    ].map((path) => ({ kind: 'file', name: path, relativePath: path }));
    const { name, contents, itemCount } = await contentFields(items);
    equal([name, itemCount], ['holiday.jpg and 1 more', 2]);
    equal(
      contents.map((node) => [node.name, node.fileCount, node.children?.length]),
      [
        ['holiday.jpg', 1, undefined],
        ['Work', 40, 40],
      ],
    );
  },

  async whatIsAddedTwiceIsSentOnce() {
    const outbox = new Outbox(new Documents(folder), [], () => []);
    const file = { path: '/none/a.txt', name: 'a.txt', size: 1 };
    await outbox.add([file, file]);
    equal((await outbox.add([{ ...file, relativePath: 'b/a.txt' }, file])).length, 1);
    await outbox.remove(outbox.items[0]);
    equal(
      outbox.items.map(({ relativePath }) => relativePath),
      ['b/a.txt'],
    );
  },

  everyLanguageHasTheSamePlaceholders() {
    const placeholders = (message) =>
      [message]
        .flatMap((one) => (typeof one === 'string' ? one : one.other))
        .flatMap((text) => [...text.matchAll(/\{\w+\}/g)].map(String))
        .sort();
    for (const [key, message] of Object.entries(en)) {
      equal([key, ...placeholders(de[key])], [key, ...placeholders(message)]);
    }
  },

  async theWindowSpeaksThePersonsLanguage() {
    const failed = failureFields([{ name: 'a', code: 'unreadable' }], 3);
    await write('transfers', document([{ ...RECENTS[1], ...failed }]));
    speak({ languages: ['fr-FR', 'de-AT', 'en'], time: 'de-AT', numbers: 'de-CH' });
    const [kept] = (await Transfers.load(new Documents(folder))).list;
    equal(
      `${kept.name}: ${statusText(kept)}`.replace(/[\u2068\u2069]/g, ''),
      'x.tar und 2 weitere: Von Pixel 9 empfangen. ' +
        'Nicht angekommen (1 von 3 Dateien): a konnte nicht gelesen werden.',
    );
    equal(words('count.items', { count: 2 }), '2 Elemente');
    equal([sizeText(1_500_000), whenText(0, 1e12)], ['1.5 MB', '1. Jän. 1970']);
    speak({ languages: ['en-US'], time: 'de-DE', numbers: 'de-DE' });
    equal([sizeText(1_500_000), whenText(0, 1e12)], ['1,5 MB', '1 Jan 1970']);
    speak({ languages: [], time: '', numbers: '' });
    equal(words('count.items', { count: 1 }), '1 item');
  },
};
