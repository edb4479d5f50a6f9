// What a stranger on the network may ask of this device, at most.

const MIB = 1 << 20;

export const VERSION = 1;

export const Limit = {
  datagram: 1200,
  devices: 200,
  /** From one source. */
  announcementsPerSecond: 50,
  helloBytes: 4096,
  /** Content in one record. */
  chunk: MIB,
  /** A frame: a chunk with its header, the segments' heads, and what sealing adds. */
  frame: MIB + 64 * 1024,
  manifestBytes: 16 * MIB,
  entries: 100_000,
  pathBytes: 4096,
  nameBytes: 255,
  depth: 64,
  textBytes: MIB,
  nameCharacters: 100,
  connections: 32,
  connectionsPerPeer: 4,
  /** Offers and comparisons that wait for the person. */
  questions: 8,
};

/** In milliseconds. */
export const Time = {
  announce: 2500,
  expire: 8000,
  answerAgain: 400,
  queries: [0, 300, 900],
  listenAgain: 1000,
  connect: 5000,
  handshake: 10_000,
  ping: 5000,
  silence: 20_000,
  farewell: 3000,
  question: 300_000,
};
