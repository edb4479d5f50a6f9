// Names of word characters, spaces and some punctuation. Most files have one, and such a name can be
// shown and saved as it is, without a closer look.

const NAME = String.raw`\w(?:[\w .()-]{0,200}\w)?`;
const SIMPLE_NAME = RegExp(`^${NAME}$`);
const SIMPLE_PATH = RegExp(`^${NAME}(?:/${NAME})*$`);

/** @param {string} name */
export const isSimpleName = (name) => SIMPLE_NAME.test(name);

/** @param {string} path with “/” between its names */
export const isSimplePath = (path) => SIMPLE_PATH.test(path);
