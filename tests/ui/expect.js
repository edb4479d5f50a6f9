// What a check expects.

export function equal(actual, expected) {
  const [one, other] = [JSON.stringify(actual), JSON.stringify(expected)];
  if (one !== other) throw new Error(`${one} is not ${other}`);
}
