// What can be found and done in the window.

import { equal } from './expect.js';
import { control, mount, nameOf, settled, shown } from './page.js';
import { ACTIVE, ASKING, CONFIRMING, DEVICES, OUTBOX, RECENTS, STATES } from './sample_state.js';

export const actionsChecks = {
  async theConsoleCallsTheHostAndIsBounded() {
    const { application, host, sendEvent } = mount();
    equal(
      shown().some((element) => nameOf(element) === 'Developer console'),
      false,
    );
    application.change({ settings: { ...application.settings, showsConsole: true } });
    control('Developer console').click();
    const called = [];
    host.invoke = async (...given) => {
      called.push(given);
      return new Uint8Array([1, 2]);
    };
    control('Method').value = 'cryptoDecrypt';
    control('Method').dispatchEvent(new Event('input'));
    equal(JSON.parse(control('Arguments').value), { key: { base64: '' }, data: { base64: '' } });
    control('Call').click();
    await settled();
    equal(called.length, 1);
    equal(called[0][1].key instanceof Uint8Array, true);
    equal(document.querySelector('.entry').textContent.includes('"AQI="'), true);
    control('Method').value = 'setReceiveFolderName';
    control('Arguments').value = '{}';
    control('Call').click();
    await settled();
    equal(called.length, 1);
    equal(document.querySelector('.entry.error').textContent.includes('requires “name”'), true);
    for (let count = 0; count < 250; ++count) sendEvent('dragActiveChanged', true);
    equal(document.querySelectorAll('.entry').length, 200);
  },

  markupIsShownAsText() {
    const markup = '<img src=x onerror=alert(1)><b>bold</b>';
    mount({
      problem: markup,
      self: { name: markup, fingerprint: markup, version: markup },
      devices: [{ ...DEVICES[0], name: markup }],
      outbox: [{ ...OUTBOX[0], name: markup }],
      transfers: [
        { ...ASKING, name: markup, deviceName: markup, offered: [markup, markup] },
        { ...RECENTS[2], text: markup },
        { ...RECENTS[4], message: markup },
      ],
    });
    equal(document.querySelectorAll('body img, body b').length, 0);
    equal(document.body.textContent.split(markup).length > 9, true);
  },

  everyControlHasANameAndEveryRegionAHeading() {
    for (const [state, given] of Object.entries(STATES)) {
      mount(given);
      for (const element of shown()) {
        if (!nameOf(element)) throw new Error(`${state}: ${element.outerHTML} has no name`);
      }
      const names = shown()
        .filter((element) => element.matches('button, input'))
        .map(nameOf);
      const twice = names.filter((name, index) => names.indexOf(name) !== index);
      equal([state, twice], [state, []]);
    }
    mount(STATES.asking);
    equal(
      [...document.querySelectorAll('main section')]
        .filter((section) => section.checkVisibility())
        .map(nameOf),
      ['Waiting for you', 'Send', 'Nearby', 'Transfers'],
    );
    equal(control('Visible nearby').getAttribute('role'), 'switch');
  },

  filesThatCameWithATextCanBeOpened() {
    mount({ transfers: [{ ...RECENTS[2], name: '3 items', text: 'hello', locations: ['/tmp/x'] }] });
    ['Copy the received text', 'Open 3 items', 'Show 3 items in its folder'].forEach((name) => control(name));
    mount({ transfers: [{ ...ASKING, offered: ['Photos'], offeredCount: 1, fileCount: 300 }] });
    equal(document.body.textContent.includes('more'), false);
  },

  async theButtonsAskForWhatTheySay() {
    const { application } = mount({
      ...STATES.ready,
      transfers: [ASKING, CONFIRMING, ...ACTIVE, ...RECENTS],
    });
    const press = (...names) => names.forEach((name) => control(name).click());
    press(
      'They match',
      'They differ',
      'Accept 12 files from Pixel 9',
      'Decline 12 files from Pixel 9',
      'Cancel holiday.jpg',
      'Open sunset.png',
      'Show sunset.png in its folder',
      'Copy the received text',
      'Try again to send backup.iso',
      'Remove movie.mkv from the list',
      'Clear recent transfers',
      'Add files',
      'Add folder',
      'Remove Photos',
      'Clear what is to be sent',
      'Send to Pixel 9',
    );
    await settled();
    equal(
      application.calls.map(([name, ...given]) => [name, ...given.map((one) => one?.name ?? one)]),
      [
        ['confirmCode', 'a2', true],
        ['confirmCode', 'a2', false],
        ['accept', 'a1'],
        ['decline', 'a1'],
        ['cancel', 's1'],
        ['open', 'r1'],
        ['reveal', 'r1'],
        ['copyText', 'r3'],
        ['retry', 'r5'],
        ['removeTransfer', 'r6'],
        ['clearRecents'],
        ['pickFiles'],
        ['pickFolder'],
        ['removeItem', 'Photos'],
        ['clearOutbox'],
        ['send', ['1']],
      ],
    );
  },

  async severalDevicesCanBeChosenButNoneWhoseKeyChanged() {
    const { application } = mount(STATES.ready);
    control('Choose Pixel 9').click();
    control('Choose Workshop laptop').click();
    control('Send to 2 devices').click();
    await settled();
    equal(application.calls, [['send', ['1', '2']]]);
    control('Choose Pixel 9').click();
    control('Choose Workshop laptop').click();
    application.change({ devices: [DEVICES[0], { ...DEVICES[1], trust: 'changed' }, DEVICES[2]] });
    equal(
      shown()
        .map(nameOf)
        .filter((name) => /^Send to/.test(name)),
      ['Send to Pixel 9', `Send to ${DEVICES[2].name}`],
    );
    equal(control('Choose Workshop laptop').disabled, true);
    control('Agree to the new key').click();
    control('Forget this device').click();
    await settled();
    equal(application.calls.slice(1), [
      ['agreeToNewKey', '2'],
      ['forgetDevice', '2'],
    ]);
  },

  async aFailureIsShownAndASwitchGoesBack() {
    const { application } = mount();
    application.nextFailure = 'The login item could not be registered.';
    control('Settings').click();
    const startup = control('Start at login');
    startup.click();
    await settled();
    equal(startup.checked, false);
    equal(
      document.querySelector('dialog .failure-text').textContent,
      'The login item could not be registered.',
    );
    startup.click();
    await settled();
    equal([startup.checked, application.settings.launchAtStartup], [true, true]);
    equal(document.querySelector('dialog .failure-text').textContent, '');
  },
};
