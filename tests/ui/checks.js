// What the views and the protocol promise, checked in the engine that runs them. Each check throws where
// the promise is broken; answers the names of those that passed.

import { actionsChecks } from './actions_checks.js';
import { useStyle } from './page.js';
import { protocolChecks } from './protocol_checks.js';
import { updatesChecks } from './updates_checks.js';

export async function scenario() {
  await useStyle();
  const checks = { ...actionsChecks, ...updatesChecks, ...protocolChecks };
  for (const check of Object.values(checks)) await check();
  return Object.keys(checks);
}
