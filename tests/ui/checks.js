// What the views and the protocol promise, checked in the engine that runs them. Each check throws where the promise is
// broken; answers the names of those that passed.

import { actionsChecks } from './actions_checks.js';
import { useStyle } from './page.js';
import { protocolChecks } from './protocol_checks.js';
import { updatesChecks } from './updates_checks.js';
import { valuesChecks } from './values_checks.js';

export async function scenario() {
  await useStyle();
  const passed = [];
  for (const [name, check] of Object.entries({
    ...valuesChecks,
    ...actionsChecks,
    ...updatesChecks,
    ...protocolChecks,
  })) {
    try {
      await check();
    } catch (error) {
      throw new Error(`${name}: ${error.message}\n${error.stack}`);
    }
    passed.push(name);
  }
  return passed;
}
