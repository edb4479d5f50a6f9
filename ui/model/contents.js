// What is moved, as a person looks at it: a tree of names with sizes, cut where it gets long.

import { Slices } from '../engine/slices.js';
import { isolated, plainName, shortened } from '../text/foreign_text.js';
import { firstOf } from '../text/format.js';
import { words } from '../text/words.js';
import { isCount, isListOf, isOneOf, isRecord, isText } from './schema.js';

/** Clusters of a name that are shown. */
export const NAME_CLUSTERS = 60;
/** The most nodes of a tree, and how many of its top are kept once the question is answered. */
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

/** @param {Named} item */
const placeOf = ({ name, relativePath }) => relativePath || name;

/** A tree of folders and files as it is made, with room for so many nodes. */
class Tree {
  #room = MOST;
  /** @type {Node[]} */
  nodes = [];
  /** Of all at the top. */
  count = 0;
  /** By path: the folder after those that it lies in. @type {Map<string, Node[]>} */
  #folders = new Map([['', []]]);

  /**
   * @param {Node | undefined} above
   * @param {() => Node} make
   */
  put(above, make) {
    if (!above) ++this.count;
    if (this.#room > 0) (above?.children ?? this.nodes).push(make());
    else if (above) above.hidden = (above.hidden ?? 0) + 1;
    --this.#room;
  }

  /**
   * The folder at a path, after those that it lies in; made where it is not there.
   * @param {string} path
   * @returns {Node[]}
   */
  folder(path) {
    const known = this.#folders.get(path);
    if (known) return known;
    const cut = path.lastIndexOf('/');
    const above = this.folder(path.slice(0, Math.max(0, cut)));
    /** @type {Node} */
    const folder = {
      name: shownName(path.slice(cut + 1)),
      kind: 'directory',
      size: 0,
      fileCount: 0,
      children: [],
    };
    this.put(above[above.length - 1], () => folder);
    const folders = [...above, folder];
    this.#folders.set(path, folders);
    return folders;
  }
}

/**
 * The tree of some items. A path below a folder stands for that folder, whether or not the folder has
 * an entry of its own.
 * @param {Named[]} items
 * @returns {Promise<{ nodes: Node[], count: number }>} `count`: of all at the top
 */
export async function contentsOf(items) {
  const slices = new Slices();
  const tree = new Tree();
  /** Files mostly come folder by folder. @type {Node[]} */
  let folders = [];
  let path = '';
  for (const item of items) {
    if (slices.isOver) await slices.next();
    const place = placeOf(item);
    if (item.kind === 'directory') {
      tree.folder(place);
      continue;
    }
    const { kind, size = 0 } = item;
    const cut = Math.max(0, place.lastIndexOf('/'));
    if (cut !== path.length || !place.startsWith(path)) {
      path = place.slice(0, cut);
      folders = tree.folder(path);
    }
    for (const folder of folders) {
      folder.size += size;
      ++folder.fileCount;
    }
    tree.put(folders[folders.length - 1], () => ({
      name: kind === 'text' ? words('item.text') : shownName(place.slice(cut === 0 ? 0 : cut + 1)),
      kind: /** @type {Node['kind']} */ (kind),
      size,
      fileCount: 1,
    }));
  }
  return { nodes: tree.nodes, count: tree.count };
}

/**
 * How many things are at the top of a tree.
 * @param {Named[]} items
 */
export function countAtTop(items) {
  const folders = new Set();
  let files = 0;
  let last = '/';
  for (const item of items) {
    const place = placeOf(item);
    if (place.startsWith(last)) continue; // most are in the folder of the one before
    const cut = place.indexOf('/');
    if (cut > 0) {
      folders.add(place.slice(0, cut));
      last = place.slice(0, cut + 1);
    } else if (item.kind === 'directory') folders.add(place);
    else ++files;
  }
  return folders.size + files;
}

/**
 * The fields of a transfer that say what is moved.
 * @param {Named[]} items
 * @returns {Promise<Pick<import('./types.js').Transfer, 'name' | 'contents' | 'itemCount'>>}
 */
export async function contentFields(items) {
  const { nodes, count } = await contentsOf(items);
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
