// Does one thing after another, as the test orders: one state of the shell, or a list of them, for
// "updateDesktopShell", or any other call as {method, arguments}. Counts the requests to look for
// devices anew.

import { followOrders } from './orders.js';
import { call, platform } from './outcome.js';

/** What the host replied. */
async function carryOut(order) {
  if (order.method) return call(order.method, order.arguments);
  for (const state of [].concat(order)) await platform.invokeMethod('updateDesktopShell', state);
  return undefined;
}

export async function scenario({ folder }) {
  let requests = 0;
  platform.setMethodCallHandler((method) => {
    if (method === 'discoveryRecoveryRequested') requests += 1;
  });
  await followOrders(folder, async (order) => {
    const outcome = await carryOut(order);
    return { requests, outcome };
  });
  return { requests };
}
