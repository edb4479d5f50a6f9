// What a stranger on the network may ask of this device, at most.

const KIB = 1 << 10;
const MIB = 1 << 20;

export const VERSION = 2;

export const Limit = {
  datagram: 1200,
  /** Datagrams a second from one source, and from all. */
  datagramsPerSource: 20,
  datagrams: 400,
  /** Devices that are not known; known ones have places of their own. */
  devices: 200,
  /** Identities that are not known, announced from one address. */
  identitiesPerSource: 4,
  addresses: 16,
  /** A frame of the handshake, and any frame before the other side is trusted. */
  strangersFrame: 4 * KIB,
  /** Records other than pings before the other side is trusted. */
  strangersRecords: 8,
  /** Pings that may come at once, beyond one a second. */
  pings: 5,
  /** The body of a control record. */
  control: 64 * KIB,
  /** What follows the size of the largest record: the rest of its header, segments, the tag. */
  frame: 4 + MIB + 64 * 16 + 16,
  manifestBytes: 16 * MIB,
  entries: 100_000,
  /** Entries in one record of the manifest. */
  entriesPerRecord: 500,
  pathBytes: 4096,
  /** User-perceived characters; what the host places. */
  pathCharacters: 1024,
  nameBytes: 255,
  depth: 64,
  /** All texts of a transfer together. */
  textBytes: MIB,
  nameCharacters: 100,
  /** Connections that have not finished the handshake, and those from one address. */
  handshakes: 16,
  handshakesPerSource: 4,
  /** Connections that begin within a second, from one address and from all. */
  callsPerSource: 8,
  calls: 40,
  /** Connections of devices that are not known, and of known ones. */
  strangers: 8,
  known: 32,
  /** Offers and comparisons that wait for the person, of devices that are not known and of known
   *  ones. */
  strangersQuestions: 4,
  knownQuestions: 8,
};

/** In milliseconds. */
export const Time = {
  /** Between two announcements. */
  announce: { shortest: 2000, longest: 3000 },
  expire: 8000,
  /** Between two looks for what has expired, at least. */
  expireAgain: 500,
  /** After a farewell from an address: longer than the longest pause between announcements. */
  expireAfterBye: 3100,
  answerAgain: 400,
  queries: [0, 300, 900],
  /** Between two changes of the list of devices that are shown. */
  showAgain: 100,
  listenAgain: 1000,
  connect: 5000,
  /** Between calls to two addresses of one device. */
  nextAddress: 250,
  /** For the whole handshake. */
  handshake: 10_000,
  greeting: 10_000,
  ping: 5000,
  silence: 20_000,
  farewell: 3000,
  question: 300_000,
  /** The first pause of an address whose question nobody answered, and the longest. */
  pause: 5000,
  longestPause: 600_000,
  /** Between two words about what has arrived. */
  taken: 500,
  /** Until what has arrived of a transfer is removed. */
  keep: 7 * 24 * 3600 * 1000,
};
