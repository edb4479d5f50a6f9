// What a check expects.

export function equal(actual, expected) {
  const [one, other] = [JSON.stringify(actual), JSON.stringify(expected)];
  if (one !== other) throw new Error(`${one} is not ${other}`);
}

export function throws(action, part) {
  try {
    action();
  } catch (error) {
    if (!error.message.includes(part)) throw new Error(`“${error.message}” does not say “${part}”`);
    return;
  }
  throw new Error(`nothing says “${part}”`);
}
