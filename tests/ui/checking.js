// Runs checks: functions that throw where a promise is broken.

/** @param {unknown} actual @param {unknown} expected */
export function equal(actual, expected) {
  const [one, other] = [JSON.stringify(actual), JSON.stringify(expected)];
  if (one !== other) throw new Error(`${one} is not ${other}`);
}

/** @param {Record<string, () => unknown>} checks @returns the names of those that passed */
export async function runChecks(checks) {
  const passed = [];
  for (const [name, check] of Object.entries(checks)) {
    try {
      await check();
    } catch (error) {
      throw new Error(`${name}: ${error.message}\n${error.stack}`);
    }
    passed.push(name);
  }
  return passed;
}
