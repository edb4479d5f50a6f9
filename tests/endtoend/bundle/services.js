// Uses what the desktop may lack.

import { call } from './outcome.js';

export async function scenario() {
  const shown = { id: 'a', title: 'Title', body: 'Body' };
  return {
    version: await call('appVersion'),
    unknown: await call('unknown'),
    deviceName: await call('deviceName'),
    permission: await call('requestNotificationPermission'),
    shown: await call('showNotification', shown),
    shownAgain: await call('showNotification', shown),
    cleared: await call('clearNotification', { id: 'a' }),
    transfer: await call('setBackgroundMode', { enabled: true, transferInProgress: true }),
    rest: await call('setBackgroundMode', {}),
    transferAgain: await call('setBackgroundMode', { enabled: true, transferInProgress: true }),
  };
}
