// An ESLint rule: what a person reads comes from the catalogue in ui/text/. A text counts as meant for a
// person where it has a capitalised word, or two words with a space between them.

const READ_BY_PEOPLE = /(?:^|[\s“„(])\p{Lu}\p{Ll}{2,}|\p{L}{2,}[,.]? \p{L}{2,}/u;

/** What is for other programs, or for whoever reads the code. */
const EXEMPT_CALLS = new Set(['digest', 'logWarning', 'querySelector', 'setAttribute']);
const EXEMPT_ERRORS = new Set(['TypeError', 'RangeError']);
const EXEMPT_CONSTANTS = new Set(['CONTROLS', 'TEXT_NAME', 'TYPES']);
const EXEMPT_PROPERTIES = new Set(['class', 'receiveFolder']);

/** @param {any} node */
function isExempt(node) {
  for (let [one, above] = [node, node.parent]; above; [one, above] = [above, above.parent]) {
    const { type } = above;
    const name = (above.callee?.property ?? above.callee ?? above.key)?.name;
    if (type.startsWith('Import') || type === 'BinaryExpression') return true;
    if (type === 'CallExpression') return isOfConsole(above.callee) || EXEMPT_CALLS.has(name);
    if (type === 'NewExpression') return EXEMPT_ERRORS.has(name);
    if (type === 'AssignmentExpression') return above.left.property?.name === 'name';
    if (type === 'VariableDeclarator') return EXEMPT_CONSTANTS.has(above.id.name);
    if (type === 'Property') return above.key === one || EXEMPT_PROPERTIES.has(name);
    if (type.endsWith('Function') || type.endsWith('FunctionExpression')) return false;
  }
  return false;
}

/** @param {any} callee */
const isOfConsole = (callee) => callee.object?.name === 'console';

export default {
  meta: {
    type: 'problem',
    schema: [],
    messages: { text: 'This text belongs in ui/text/catalogue/.' },
  },
  create: (context) => {
    const check = (node, text) => {
      if (READ_BY_PEOPLE.test(text) && !isExempt(node)) context.report({ node, messageId: 'text' });
    };
    return {
      Literal: (node) => typeof node.value === 'string' && check(node, node.value),
      TemplateElement: (node) => check(node, node.value.raw),
    };
  },
};
