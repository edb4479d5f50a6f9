// Two ends of a connection within the page, with what crosses it to be seen and changed.

import { FrameStream } from './protocol/frames.js';

/** What one end wrote and the other has not read. */
class Way {
  bytes = [];
  isOver = false;
  wake = () => {};

  write(bytes) {
    this.bytes.push(...bytes);
    this.wake();
  }

  end() {
    this.isOver = true;
    this.wake();
  }

  async read(minimum, maximum = minimum) {
    while (this.bytes.length < minimum && !this.isOver) {
      await new Promise((resolve) => { this.wake = resolve; });
    }
    return Uint8Array.from(this.bytes.splice(0, maximum));
  }
}

function end(incoming, outgoing, peer) {
  return {
    peer,
    read: (minimum, maximum) => incoming.read(minimum, maximum),
    write: async (bytes) => outgoing.write(bytes),
    finish: async () => outgoing.end(),
    close: async () => {
      incoming.end();
      outgoing.end();
    },
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
  (async () => {
    for (let number = 0; ; ++number) {
      const frame = await nearEnd.read(1 << 22);
      if (!frame) break;
      for (const passed of meddle(frame, number)) await farEnd.write(passed);
    }
    await farEnd.finish();
  })();
  (async () => {
    for (let frame; (frame = await farEnd.read(1 << 22));) await nearEnd.write(frame);
    await nearEnd.finish();
  })();
  return [caller, callee];
}
