// What the model holds and the views show.

/** @typedef {import('../text/words.js').Sentence} Sentence */

/** As the host's intake describes it; the path of a text is empty.
 *  @typedef {{ path: string, name: string, size: number, kind: 'file' | 'directory' | 'text',
 *              relativePath?: string, text?: string }} Item */

/** `unproven`: announced with a known key, which was not proven. `changed`: its key is not the one it
 *  had; nothing is sent or received until the person agrees.
 *  @typedef {{ id: string, key: string, name: string, fingerprint: string,
 *              trust: 'new' | 'trusted' | 'unproven' | 'changed', isAway?: boolean }} Device */

/** A device whose key is kept, near or not. Times are in milliseconds since 1970; 0 where they were not
 *  kept. `acceptsUpTo`: bytes of an offer that is accepted without a question; 0 for none.
 *  @typedef {{ key: string, name: string, fingerprint: string, since: number, seen: number,
 *              acceptsUpTo: number, isNear: boolean }} KnownDevice */

/** One thing of what is moved, as it is shown. `hidden`: how many below it are not listed.
 *  @typedef {{ name: string, kind: 'file' | 'directory' | 'text', size: number, fileCount: number,
 *              children?: Node[], hidden?: number }} Node */

/** First `connecting`, then `confirming` where both persons compare the code, then `asking` until
 *  the receiver has answered, then `active`, and one of the other five in the end. A `paused` one
 *  goes on where it ended when it is sent again, as does a `failed` one.
 *  @typedef {'connecting' | 'confirming' | 'asking' | 'active' |
 *            'complete' | 'failed' | 'paused' | 'cancelled' | 'declined'} TransferState */

/**
 * @typedef {object} Transfer
 * @property {string} id
 * @property {'send' | 'receive'} direction
 * @property {string} deviceId
 * @property {string} deviceName
 * @property {string} name what is moved, for a person: “holiday.jpg”, “holiday.jpg and 2 more”, “Text”
 * @property {TransferState} state
 * @property {string | null} code six digits, while confirming
 * @property {Sentence | null} message what went wrong
 * @property {number} fileCount
 * @property {number} bytesTotal
 * @property {number} bytesDone
 * @property {number} rate in bytes a second; 0 while unknown
 * @property {number | null} secondsLeft
 * @property {Item[]} items what is sent
 * @property {Node[]} contents what is moved; once it was answered only what is at the top
 * @property {number} itemCount how many that are, without what is inside folders
 * @property {boolean} isConfirmed whether this person has said that the codes match, while confirming
 * @property {string[]} locations top-level places of what was received
 * @property {string | null} text that was received; of a long one the beginning
 * @property {string} [textLocation] where the whole of a long text is
 * @property {string} number by which the receiver knows it when it is sent again
 * @property {string} [scratch] what its files in the scratch area are called by, where it is received
 * @property {boolean} isStranger whether the other device was not known when it called
 * @property {boolean} isStalled whether nothing has arrived for two seconds, while active
 * @property {FileFailure[]} failures the files that did not arrive
 * @property {number} failureCount how many that are; of many only the first are listed
 * @property {Sentence | null} note what the person should know besides, such as names that were changed
 * @property {number} when of its last change of state, in milliseconds since 1970
 */

/** `reason`: a sentence with the name, without its point.
 *  @typedef {{ name: string, reason: Sentence }} FileFailure */

/** @typedef {{ receiveFolder: string, isVisible: boolean, launchAtStartup: boolean,
 *              notifications: 'unknown' | 'granted' | 'denied', showsConsole: boolean,
 *              deviceName: string, zoom: number, knowsItStays: boolean }} Settings
 *    deviceName: empty for the name that the host gives; zoom: in percent; knowsItStays: whether the
 *    person was told that the program goes on without its window */

export {};
