// What stays as it is while the state changes, and what is said of it.

import { equal } from './expect.js';
import { control, mount } from './page.js';
import { ACTIVE, ASKING, RECENTS, transfer } from './sample_state.js';
import { TransferNews } from './view/transfer_words.js';

export const updatesChecks = {
  rowsAndFocusOutlastUpdates() {
    const { application } = mount({ transfers: ACTIVE });
    const cancel = control('Cancel Photos');
    cancel.focus();
    const other = document.querySelector('[data-key=s1]');
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
    for (let step = 1; step <= 50; ++step) {
      application.change({ transfers: application.transfers.map((one) => ({ ...one })) });
    }
    equal(watcher.takeRecords().length, 0);
    for (let step = 1; step <= 50; ++step) {
      const [first, second, ...rest] = application.transfers;
      application.change({ transfers: [first, { ...second, bytesDone: step * 1e6 }, ...rest] });
    }
    equal(blurs, 0);
    const touched = new Set(
      watcher
        .takeRecords()
        .map(({ target }) => (target.parentElement?.closest('[data-key]') ?? target).dataset.key),
    );
    equal([...touched], ['s2']);
    application.change({ transfers: [...application.transfers].reverse() });
    equal(document.activeElement === cancel, true);
  },

  focusGoesToTheSameRowAndNeverToAnotherButton() {
    const { application } = mount({ transfers: [ASKING, { ...ASKING, id: 'a9', name: 'More' }] });
    control('Accept 12 files from Pixel 9').focus();
    application.change({ transfers: [{ ...ASKING, state: 'active' }, application.transfers[1]] });
    equal(document.activeElement.dataset.key, 'a1');
    application.change({ transfers: [application.transfers[1]] });
    equal(document.activeElement.dataset.key, 'a9');
    application.change({ transfers: [] });
    equal(document.activeElement.tagName, 'MAIN');
  },

  progressDoesNotChatter() {
    const { application } = mount({ transfers: [transfer({ state: 'connecting' })] });
    const heard = new Set();
    const region = document.querySelector('.unseen');
    equal(region.getAttribute('role'), 'status');
    for (let percent = 0; percent <= 100; ++percent) {
      application.change({ transfers: [transfer({ bytesDone: percent * 800_000 })] });
      heard.add(region.textContent);
    }
    application.change({ transfers: [transfer({ state: 'complete', bytesDone: 80_000_000 })] });
    heard.add(region.textContent);
    equal(
      [...heard],
      [
        'holiday.jpg: Receiving from Pixel 9.',
        'holiday.jpg: 25 percent.',
        'holiday.jpg: 50 percent.',
        'holiday.jpg: 75 percent.',
        'holiday.jpg: 100 percent.',
        'holiday.jpg: Received from Pixel 9.',
      ],
    );
    equal(new TransferNews().update(RECENTS), []);
    equal(document.querySelector('main [aria-live], main [role=status], main [role=alert]'), null);
  },
};
