// How numbers, times, states and the values of the channel read.

import { equal, throws } from './expect.js';
import { mount } from './page.js';
import { STATES, transfer } from './sample_state.js';
import { Float64 } from './engine/codec.js';
import { objection, parseArguments, valueText } from './view/console_values.js';
import { durationText, rateText, share, sizeText, whenText } from './view/format.js';
import { factsText, statusText } from './view/transfer_words.js';

export const valuesChecks = {
  numbersReadAsPeopleWriteThem() {
    equal([0, 1, 999, 1000, 999_949, 999_950, 1_500_000_000].map(sizeText), [
      '0 bytes',
      '1 byte',
      '999 bytes',
      '1.0 kB',
      '999.9 kB',
      '1.0 MB',
      '1.5 GB',
    ]);
    equal(rateText(5_240_000), '5.2 MB/s');
    equal([0, 0.2, 59, 60, 61, 3599, 3600, 3900, 86_400].map(durationText), [
      '1 s',
      '1 s',
      '59 s',
      '1 min',
      '2 min',
      '1 h',
      '1 h',
      '1 h 5 min',
      'more than a day',
    ]);
    equal(
      [
        { bytesDone: 5, bytesTotal: 0 },
        { bytesDone: 9, bytesTotal: 4 },
      ].map(share),
      [0, 1],
    );
    const noon = new Date(2026, 5, 12, 12).getTime();
    equal(whenText(noon, noon + 60_000).includes('12'), true);
    equal(/12.*,|,.*12/.test(whenText(noon, noon + 86_400_000)), true);
  },

  callsOfTheConsoleAreUnderstood() {
    equal(parseArguments('  '), null);
    equal(parseArguments('{"progress": {"float64": 1}}').progress instanceof Float64, true);
    equal(
      valueText(parseArguments('{"key": {"hex": "00 ff:10"}, "data": [{"base64": "AP8="}]}')),
      valueText({ key: new Uint8Array([0, 255, 16]), data: [new Uint8Array([0, 255])] }),
    );
    equal(
      JSON.parse(valueText({ big: 2n ** 60n, bytes: new Uint8Array([1]), map: new Map([[1, 2]]) })),
      { big: String(2n ** 60n), bytes: { base64: 'AQ==' }, map: [[1, 2]] },
    );
    equal(JSON.parse(valueText(new Uint8Array(10_000))).bytesInAll, 10_000);
    equal(valueText('x'.repeat(50_000)).length < 21_000, true);
    equal(valueText(undefined), 'null');
    throws(() => parseArguments('{'), 'no JSON');
    throws(() => parseArguments('{"hex": "0"}'), 'no hex');
    throws(() => parseArguments('{"base64": "*"}'), 'no base64');
    equal(
      [
        objection('deviceName', null),
        objection('setBackgroundMode', {}),
        objection('unknown', null),
        objection('locateReceivedFiles', { names: [] }),
      ],
      [null, null, null, null],
    );
    equal(
      objection('cryptoEncrypt', { key: new Uint8Array(32), data: 'text' })?.includes('“data”'),
      true,
    );
    equal(objection('setReceiveFolderName', null)?.includes('map'), true);
  },

  everyStateIsPutIntoWords() {
    for (const state of [
      'connecting',
      'confirming',
      'asking',
      'active',
      'complete',
      'failed',
      'cancelled',
      'declined',
    ]) {
      for (const direction of ['send', 'receive']) {
        equal(statusText(transfer({ state, direction })).length > 5, true);
      }
    }
    equal(factsText(transfer({ state: 'confirming', bytesTotal: 0 })), '');
    mount(STATES.confirming);
    equal(
      [
        document.querySelector('.code').textContent,
        document.querySelector('.code').getAttribute('aria-label'),
      ],
      ['482913', 'Code 4 8 2 9 1 3'],
    );
  },
};
