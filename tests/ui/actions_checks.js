// What can be found and done in the window.

import { answerable, control, equal, mount, nameOf, open, settled, shown } from './harness.js';
import { distinctName } from './model/namesakes.js';
import {
  ACTIVE,
  ASKING,
  CONFIRMING,
  DEVICES,
  KNOWN,
  OUTBOX,
  RECENTS,
  STATES,
} from './sample_state.js';

/** What each button of a full window asks for. */
const ASKED_BY = {
  'They match': ['courier.answer', 'a2', true],
  'They differ': ['courier.answer', 'a2', false],
  'Accept IMG_2041.jpg and 3 more from Pixel 9': ['courier.accept', 'a1'],
  'Decline IMG_2041.jpg and 3 more from Pixel 9': ['courier.answer', 'a1', false],
  'Cancel Photos': ['courier.cancel', 's2'],
  'Open sunset.png': ['history.open', 'r1'],
  'Show sunset.png in its folder': ['history.reveal', 'r1'],
  'Copy the received text': ['history.copyText', 'r3'],
  'Try again to send backup.iso': ['sending.retry', 'r5'],
  'Remove movie.mkv from the list': ['history.remove', 'r6'],
  'Clear recent transfers': ['history.clear'],
  'Add files': ['choosing.pickFiles'],
  'Add folder': ['choosing.pickFolder'],
  'Remove holiday.jpg': ['choosing.remove', OUTBOX[0]],
  'Clear what will be sent': ['choosing.clear'],
  'Send to Pixel 9': ['sending.send', ['1']],
};

export const actionsChecks = {
  markupIsShownAsText() {
    const markup = '<img src=x onerror=alert(1)><b>bold</b>';
    mount({
      problem: markup,
      self: { name: markup, fingerprint: markup, version: markup },
      devices: [{ ...DEVICES[0], name: markup }],
      outbox: [{ ...OUTBOX[0], name: markup }],
      transfers: [
        { ...ASKING, name: markup, deviceName: markup },
        { ...RECENTS[2], text: markup },
        { ...RECENTS[3], message: markup },
      ],
    });
    equal(document.querySelectorAll('body img, body b').length, 0);
    equal(document.body.textContent.split(markup).length > 7, true);
  },

  everyControlHasANameOfItsOwn() {
    for (const [state, given] of Object.entries(STATES)) {
      mount(given);
      const nameless = shown()
        .filter((element) => !nameOf(element))
        .map((element) => `${element.tagName}.${element.className}`);
      const names = shown()
        .filter((element) => element.matches('button, input'))
        .map(nameOf);
      const twice = names.filter((name, index) => names.indexOf(name) !== index);
      equal([state, nameless, twice], [state, [], []]);
    }
    mount(STATES.requests);
    equal(document.querySelector('.code').getAttribute('aria-label'), 'Code 4 8 2 9 1 3');
    equal(control('Visible nearby').getAttribute('role'), 'switch');
  },

  async theButtonsAskForWhatTheySay() {
    const application = mount({
      ...STATES.ready,
      transfers: [ASKING, CONFIRMING, ACTIVE[1], ...RECENTS],
    });
    for (const name of Object.keys(ASKED_BY)) control(name).click();
    await settled();
    equal(application.calls, Object.values(ASKED_BY));
  },

  async severalDevicesCanBeChosenButNoneWhoseKeyChanged() {
    const application = mount(STATES.ready);
    control('Choose Pixel 9').click();
    control('Choose Workshop laptop').click();
    control('Send to 2 devices').click();
    await settled();
    application.change({ devices: [DEVICES[0], { ...DEVICES[1], trust: 'changed' }, DEVICES[2]] });
    equal(shown().map(nameOf).includes('Send to Workshop laptop'), false);
    equal(control('Choose Workshop laptop').disabled, true);
    await answerable();
    control('Trust the new key…').click();
    control('Forget this device').click();
    await settled();
    equal(application.calls, [
      ['sending.send', ['1', '2']],
      ['known.agreeToNewKey', '2'],
      ['known.forget', 'key 2'],
    ]);
  },

  async whatComesInMovesNothingAndTakesNoClickAtFirst() {
    const application = mount({ devices: DEVICES, outbox: OUTBOX, transfers: RECENTS });
    const places = () =>
      [...document.querySelectorAll('.home button')].map((element) => {
        const { top, left } = element.getBoundingClientRect();
        return [top, left];
      });
    const before = places();
    application.change({ transfers: [CONFIRMING, ...RECENTS] });
    equal(places(), before);
    const match = [...document.querySelectorAll('.requests button')].find(
      (element) => nameOf(element) === 'They match',
    );
    const { left, top } = match.getBoundingClientRect();
    equal(document.elementFromPoint(left + 5, top + 5) === match, false);
    await answerable();
    equal(document.elementFromPoint(left + 5, top + 5) === match, true);
  },

  async aKeyIsForgottenWhetherItsDeviceIsNearOrNot() {
    const application = mount({
      knownDevices: KNOWN,
    });
    open('Settings');
    control('Forget Alice').click();
    await settled();
    const most = document.querySelector('[aria-label="Accept without asking from Büro"]');
    most.value = '100000000';
    most.dispatchEvent(new Event('change'));
    await settled();
    equal(application.calls, [
      ['known.forget', '04ab'],
      ['known.acceptUpTo', '04cd', 1e8],
    ]);
    const known = [{ key: '04ab', name: 'Alice' }];
    equal(distinctName({ key: '04ab', name: 'Alice' }, known), 'Alice');
    equal(distinctName({ key: '04cd', name: 'ÁLICE' }, known), 'ÁLICE (not the one you know)');
  },

  async anEmptiedNameGoesBackToTheComputersOwn() {
    const application = mount();
    open('Settings');
    const field = document.querySelector('dialog[open] input[type=text]');
    const name = field.value;
    field.value = ' ';
    field.dispatchEvent(new Event('input'));
    control('Rename').click();
    await settled();
    equal(application.calls, [['changeSettings', { deviceName: '' }]]);
    equal([field.value === name, control('Rename').disabled], [true, true]);
  },

  async aFailureIsShownAndASwitchGoesBack() {
    const application = mount();
    application.nextFailure = 'The login item could not be registered.';
    open('Settings');
    const startup = control('Start at login');
    const failure = document.querySelector('dialog .failure-text');
    startup.click();
    await settled();
    equal(
      [startup.checked, failure.textContent],
      [false, 'The login item could not be registered.'],
    );
    startup.click();
    await settled();
    equal([startup.checked, failure.textContent], [true, '']);
  },
};
