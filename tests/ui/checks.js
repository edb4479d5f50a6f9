// What the views and the protocol promise, checked in the engine that runs them. Each check throws where
// the promise is broken; answers the names of those that passed.

import { actionsChecks } from './actions_checks.js';
import { useStyle } from './harness.js';
import { discoveryChecks } from './discovery_checks.js';
import { offerChecks } from './offer_checks.js';
import { protocolChecks } from './protocol_checks.js';
import { savedChecks } from './saved_checks.js';
import { updatesChecks } from './updates_checks.js';

export async function scenario() {
  await useStyle();
  const checks = {
    ...actionsChecks,
    ...updatesChecks,
    ...savedChecks,
    ...protocolChecks,
    ...discoveryChecks,
    ...offerChecks,
  };
  for (const check of Object.values(checks)) await check();
  return Object.keys(checks);
}
