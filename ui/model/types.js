// What the model holds and the views show.

/** As the host's intake describes it; the path of a text is empty.
 *  @typedef {{ path: string, name: string, size: number, kind: 'file' | 'directory' | 'text',
 *              relativePath?: string, text?: string }} Item */

/** `changed`: its key is not the one it had; nothing is sent or received until the person agrees.
 *  @typedef {{ id: string, name: string, fingerprint: string,
 *              trust: 'new' | 'trusted' | 'changed' }} Device */

/** First `connecting`, then `confirming` where both persons compare the code, then `asking` until
 *  the receiver has answered, then `active`, and one of the other four in the end.
 *  @typedef {'connecting' | 'confirming' | 'asking' | 'active' |
 *            'complete' | 'failed' | 'cancelled' | 'declined'} TransferState */

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
 * @property {string | null} text that was received
 * @property {number} when of its last change of state, in milliseconds since 1970
 */

/** @typedef {{ receiveFolder: string, isVisible: boolean, launchAtStartup: boolean,
 *              notifications: 'unknown' | 'granted' | 'denied', showsConsole: boolean }} Settings */

export {};
