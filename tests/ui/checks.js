// What the views promise, checked in the engine that shows them. Each check throws where the promise is
// broken; answers the names of those that passed.

import { actionsChecks } from './actions_checks.js';
import { useStyle } from './page.js';
import { updatesChecks } from './updates_checks.js';
import { valuesChecks } from './values_checks.js';

export async function scenario() {
  await useStyle();
  const passed = [];
  for (const [name, check] of Object.entries({
    ...valuesChecks,
    ...actionsChecks,
    ...updatesChecks,
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
