// Two ends of a connection within the page, with what crosses it to be seen and changed.

import { FrameStream } from './protocol/frames.js';

/** What one end wrote and the other has not read. */
class Way {
  bytes = [];
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
}

function end(incoming, outgoing, peer) {
  return {
    peer,
    read: (minimum, maximum) => incoming.read(minimum, maximum),
    write: async (bytes, head = []) => outgoing.write([...head, ...bytes]),
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
    for (let number = 0, frame; (frame = await from.read(1 << 22)); ++number) {
      for (const passed of change(frame, number)) await to.write(passed);
    }
    await to.finish();
  };
  pass(nearEnd, farEnd, meddle);
  pass(farEnd, nearEnd, (frame) => [frame]);
  return [caller, callee];
}
