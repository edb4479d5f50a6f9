// A page that the test controls: each order is a call to begin, {method, args}, or {} to look. Answers
// with all replies so far, in the order of their calls, and with all events of the host.

import { followOrders } from './orders.js';
import { call, platform } from './outcome.js';

export async function scenario({ folder }) {
  const replies = [];
  const events = [];
  platform.setMethodCallHandler((...event) => {
    events.push(event);
  });
  await followOrders(folder, async ({ method, args }) => {
    if (method) {
      const number = replies.push(null) - 1;
      call(method, args).then((reply) => {
        replies[number] = reply;
      });
    }
    return { replies, events };
  });
}
