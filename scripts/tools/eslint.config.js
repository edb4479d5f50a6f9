// What the JavaScript of this tree is checked for, beside its types and its layout.

import js from '@eslint/js';
import globals from 'globals';
import catalogueRule from './catalogue_rule.js';

export default [
  js.configs.recommended,
  {
    languageOptions: { ecmaVersion: 2024, sourceType: 'module', globals: globals.browser },
    linterOptions: { reportUnusedDisableDirectives: 'error' },
    rules: {
      eqeqeq: 'error',
      'no-console': ['error', { allow: ['warn', 'error'] }],
      'no-else-return': 'error',
      'no-implicit-globals': 'error',
      'no-param-reassign': 'error',
      'no-promise-executor-return': 'off',
      'no-restricted-properties': [
        'error',
        { property: 'innerHTML', message: 'Text goes in as text.' },
        { property: 'outerHTML', message: 'Text goes in as text.' },
        { property: 'insertAdjacentHTML', message: 'Text goes in as text.' },
      ],
      'no-self-compare': 'error',
      'no-shadow': 'error',
      'no-unused-expressions': 'error',
      'no-useless-return': 'error',
      'no-var': 'error',
      'object-shorthand': 'error',
      'prefer-const': 'error',
      'prefer-template': 'error',
    },
  },
  {
    files: [
      'ui/view/**/*.js',
      'ui/model/**/*.js',
      'ui/protocol/errors.js',
      'ui/text/*.js',
      'ui/main.js',
    ],
    plugins: { brevanholt: { rules: { catalogue: catalogueRule } } },
    rules: { 'brevanholt/catalogue': 'error' },
  },
];
