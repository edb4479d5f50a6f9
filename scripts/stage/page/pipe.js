// Two ends of a connection within the page, with what crosses it in the handshake to be seen and
// changed. After that they pass records on as they are: sealing them is the host's.

import { FrameStream } from './protocol/frames.js';

/** What one end wrote and the other has not read. */
class Way {
  bytes = [];
  records = [];
  isOver = false;
  wake = () => {};

  write(bytes, isOver = false) {
    for (const byte of bytes) this.bytes.push(byte);
    this.isOver ||= isOver;
    this.wake();
  }

  async read(minimum, maximum = minimum) {
    while (this.bytes.length < minimum && !this.isOver) {
      await new Promise((resolve) => {
        this.wake = resolve;
      });
    }
    return Uint8Array.from(this.bytes.splice(0, maximum));
  }

  async receive(largest) {
    while (this.records.length === 0 && !this.isOver) {
      await new Promise((resolve) => {
        this.wake = resolve;
      });
    }
    const { type, body = '' } = this.records.shift() ?? {};
    const isTooLarge = body.length + OVERHEAD > largest;
    if (isTooLarge) throw Object.assign(new Error(), { code: 'socket_error', details: 'EPROTO' });
    const nothing = { taken: 0, whole: [], texts: [], failed: [] };
    return type ? { ...nothing, type, body } : { ...nothing, isEnd: true };
  }
}

/** What a record's frame holds beside its body. */
const OVERHEAD = 20;

function sealedEnd(incoming, outgoing) {
  const send = async (type, body) => {
    outgoing.records.push({ type, body });
    outgoing.wake();
  };
  return {
    send,
    receive: (largest) => incoming.receive(largest),
    async part(type, body) {
      if (type) send(type, body);
      outgoing.write([], true);
    },
    close: async () => [incoming, outgoing].forEach((way) => way.write([], true)),
  };
}

function end(incoming, outgoing, peer) {
  return {
    peer,
    read: (minimum, maximum) => incoming.read(minimum, maximum),
    write: async (bytes, head = []) => outgoing.write([...head, ...bytes]),
    protect: async () => sealedEnd(incoming, outgoing),
    finish: async () => outgoing.write([], true),
    close: async () => [incoming, outgoing].forEach((way) => way.write([], true)),
  };
}

/** The frame streams of both ends. */
export function pipe() {
  const there = new Way();
  const back = new Way();
  return [new FrameStream(end(back, there, 'callee')), new FrameStream(end(there, back, 'caller'))];
}

/**
 * The frame streams of both ends with somebody in between: `meddle` gets each frame from the caller
 * by its number, and answers those that go on.
 */
export function tappedPipe(meddle) {
  const [caller, nearEnd] = pipe();
  const [farEnd, callee] = pipe();
  const pass = async (from, to, change) => {
    for (let number = 0, frame; (frame = await from.read()); ++number) {
      for (const passed of change(frame, number)) await to.write(passed);
    }
    await to.finish();
  };
  pass(nearEnd, farEnd, meddle);
  pass(farEnd, nearEnd, (frame) => [frame]);
  return [caller, callee];
}
