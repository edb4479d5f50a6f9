// What stays as it is while the state changes, and what is said of it.

import { control, equal, mount, until } from './harness.js';
import { ACTIVE, ASKING, RECENTS, transfer } from './sample_state.js';
import { durationText, share, sizeText } from './text/format.js';
import { TransferNews } from './view/transfer_words.js';

export const updatesChecks = {
  rowsAndFocusOutlastUpdates() {
    const application = mount({ transfers: ACTIVE });
    const cancel = control('Cancel Photos');
    cancel.focus();
    let blurs = 0;
    cancel.addEventListener('blur', () => {
      blurs += 1;
    });
    const watcher = new MutationObserver(() => {});
    watcher.observe(document.querySelector('main'), {
      subtree: true,
      childList: true,
      characterData: true,
      attributes: true,
    });
    application.change({ transfers: application.transfers.map((one) => ({ ...one })) });
    equal(watcher.takeRecords().length, 0);
    for (let step = 1; step <= 50; ++step) {
      const [first, second, ...rest] = application.transfers;
      application.change({ transfers: [first, { ...second, bytesDone: step * 1e6 }, ...rest] });
    }
    equal(blurs, 0);
    const rowOf = ({ target }) =>
      (target.parentElement?.closest('[data-key]') ?? target).dataset.key;
    equal([...new Set(watcher.takeRecords().map(rowOf))], ['s2']);
    application.change({ transfers: [...application.transfers].reverse() });
    equal(document.activeElement === cancel, true);
  },

  focusGoesToTheSameRowAndNeverToAnotherButton() {
    const application = mount({ transfers: [ASKING, { ...ASKING, id: 'a9', name: 'More' }] });
    control('Accept IMG_2041.jpg and 3 more from Pixel 9').focus();
    application.change({ transfers: [{ ...ASKING, state: 'active' }, application.transfers[1]] });
    equal(document.activeElement.dataset.key, 'a1');
    application.change({ transfers: [application.transfers[1]] });
    equal(document.activeElement.dataset.key, 'a9');
    application.change({ transfers: [] });
    equal(document.activeElement.tagName, 'MAIN');
  },

  async rowsOfALongHistoryComeWhenScrolledTo() {
    const ended = Array.from({ length: 300 }, (_, at) => ({ ...RECENTS[0], id: `h${at}` }));
    mount({ transfers: ended });
    const rows = () => document.querySelectorAll('.transfers [data-key]');
    equal(rows().length < 100, true);
    while (rows().length < ended.length) {
      const before = rows().length;
      rows()[before - 1].scrollIntoView();
      await until(() => rows().length > before, `rows after ${before}`);
    }
    equal(
      [...rows()].map(({ dataset }) => dataset.key),
      ended.map(({ id }) => id),
    );
  },

  progressDoesNotChatter() {
    const application = mount({ transfers: [transfer({ state: 'connecting' })] });
    const heard = new Set();
    const hear = (given) => {
      application.change({ transfers: [transfer(given)] });
      heard.add(document.querySelector('.unseen[role=status]').textContent);
    };
    for (let percent = 0; percent <= 100; ++percent) hear({ bytesDone: percent * 800_000 });
    hear({ state: 'complete', bytesDone: 80_000_000 });
    equal(
      [...heard].map((text) => text.replace('holiday.jpg: ', '')),
      ['Receiving from Pixel 9.', '25%.', '50%.', '75%.', '100%.', 'Received from Pixel 9.'],
    );
    equal(new TransferNews().update(RECENTS), []);
    equal(document.querySelector('main [aria-live], main [role=status], main [role=alert]'), null);
  },

  numbersReadAsPeopleWriteThem() {
    equal([0, 1, 999, 999_949, 999_950].map(sizeText), [
      '0 bytes',
      '1 byte',
      '999 bytes',
      '999.9 kB',
      '1.0 MB',
    ]);
    equal([0, 59, 60, 61, 3599, 3900, 86_400].map(durationText), [
      '1 sec',
      '59 sec',
      '1 min',
      '2 min',
      '1 hr',
      '1 hr 5 min',
      'more than a day',
    ]);
    equal([share({ bytesDone: 5, bytesTotal: 0 }), share({ bytesDone: 9, bytesTotal: 4 })], [0, 1]);
  },
};
