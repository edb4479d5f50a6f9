// What the model holds and the views show.

/** As the host's intake describes it; the path of a text is empty.
 *  @typedef {{ path: string, name: string, size: number, kind: 'file' | 'directory' | 'text',
 *              relativePath?: string, text?: string }} Item */

/** `unproven`: announced with a known key, which was not proven. `changed`: its key is not the one it
 *  had; nothing is sent or received until the person agrees.
 *  @typedef {{ id: string, key: string, name: string, fingerprint: string,
 *              trust: 'new' | 'trusted' | 'unproven' | 'changed', isAway?: boolean }} Device */

/** A device whose key is kept, near or not.
 *  @typedef {{ key: string, name: string, fingerprint: string }} KnownDevice */

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
 * @property {string} name what is moved, for a person: “holiday.jpg”, “3 items”, “Text”
 * @property {TransferState} state
 * @property {string | null} code six digits, while confirming
 * @property {string | null} message what went wrong, in words
 * @property {number} fileCount
 * @property {number} bytesTotal
 * @property {number} bytesDone
 * @property {number} rate in bytes a second; 0 while unknown
 * @property {number | null} secondsLeft
 * @property {Item[]} items what is sent
 * @property {string[]} offered names of the first few that are offered, while asking
 * @property {number} offeredCount how many that are, without what is inside folders
 * @property {string[]} locations top-level places of what was received
 * @property {string | null} text that was received; of a long one the beginning
 * @property {string} [textLocation] where the whole of a long text is
 * @property {string} number by which the receiver knows it when it is sent again
 * @property {string} [scratch] what its files in the scratch area are called by, where it is received
 * @property {boolean} isStranger whether the other device was not known when it called
 * @property {boolean} isStalled whether nothing has arrived for two seconds, while active
 * @property {FileFailure[]} failures the files that did not arrive
 * @property {number} failureCount how many that are; of many only the first are listed
 * @property {string | null} note what the person should know besides, such as names that were changed
 * @property {number} when of its last change of state, in milliseconds since 1970
 */

/** `reason`: to go after the name, such as “changed while it was being sent”.
 *  @typedef {{ name: string, reason: string }} FileFailure */

/** @typedef {{ receiveFolder: string, isVisible: boolean, launchAtStartup: boolean,
 *              notifications: 'unknown' | 'granted' | 'denied', showsConsole: boolean }} Settings */

export {};
