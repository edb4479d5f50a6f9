// What is moved, as a person looks at it: a tree of names with sizes, cut where it gets long.

import { isolated, plainName, shortened } from '../text/foreign_text.js';
import { firstOf } from '../text/format.js';
import { words } from '../text/words.js';
import { isCount, isListOf, isOneOf, isRecord, isText } from './schema.js';

/** Clusters of a name that are shown. */
export const NAME_CLUSTERS = 60;
/** Nodes of a tree, and those at its top that outlast the question. */
const MOST = 400;
const LISTED = 50;

/** @typedef {import('./types.js').Node} Node */
/** @typedef {{ kind: string, name: string, relativePath?: string, size?: number }} Named */

/** How documents hold a node, which has nothing below it there. */
export const isNode = isRecord({
  name: isText,
  kind: isOneOf(['file', 'directory', 'text']),
  size: isCount,
  fileCount: isCount,
});

/** @param {string} name */
const shownName = (name) => shortened(plainName(name), NAME_CLUSTERS);

/**
 * The tree of some items. A path below a folder stands for that folder, whether or not the folder has
 * an entry of its own.
 * @param {Named[]} items
 * @returns {{ nodes: Node[], count: number }} `count`: of all at the top
 */
export function contentsOf(items) {
  let room = MOST;
  let count = 0;
  /** @type {Node[]} */
  const nodes = [];
  /** @type {Map<string, Node>} */
  const folders = new Map();

  /**
   * @param {Node | undefined} above
   * @param {Node} node
   */
  const put = (above, node) => {
    const siblings = above?.children ?? nodes;
    if (!above) ++count;
    if (room > 0) siblings.push(node);
    else if (above) above.hidden = (above.hidden ?? 0) + 1;
    --room;
  };
  for (const { kind, name, relativePath, size = 0 } of items) {
    const pieces = (relativePath || name).split('/');
    const leaf = kind === 'directory' ? null : pieces.pop();
    /** @type {Node | undefined} */
    let above;
    let path = '';
    for (const piece of pieces) {
      path += `/${piece}`;
      let folder = folders.get(path);
      if (!folder) {
        folder = {
          name: shownName(piece),
          kind: 'directory',
          size: 0,
          fileCount: 0,
          children: [],
        };
        folders.set(path, folder);
        put(above, folder);
      }
      if (leaf) {
        folder.size += size;
        ++folder.fileCount;
      }
      above = folder;
    }
    if (leaf) {
      const shown = kind === 'text' ? words('item.text') : shownName(leaf);
      put(above, { name: shown, kind: /** @type {Node['kind']} */ (kind), size, fileCount: 1 });
    }
  }
  return { nodes, count };
}

/**
 * The fields of a transfer that say what is moved.
 * @param {Named[]} items
 * @returns {Pick<import('./types.js').Transfer, 'name' | 'contents' | 'itemCount'>}
 */
export function contentFields(items) {
  const { nodes, count } = contentsOf(items);
  return { name: nameOfContents(nodes, count), contents: nodes, itemCount: count };
}

/**
 * What some items are called together.
 * @param {Node[]} nodes
 * @param {number} count of all at the top
 */
export const nameOfContents = ([first], count) =>
  first ? firstOf(isolatedIfJoined(first.name, count), count) : '';

/**
 * @param {string} name
 * @param {number} count
 */
const isolatedIfJoined = (name, count) => (count > 1 ? isolated(name) : name);

/**
 * What is kept of a tree once nobody has to decide about it: its top.
 * @param {Node[]} nodes
 * @returns {Node[]}
 */
export const topOf = (nodes) =>
  nodes
    .slice(0, LISTED)
    .map(({ name, kind, size, fileCount }) => ({ name, kind, size, fileCount }));

export const isContents = isListOf(isNode);
