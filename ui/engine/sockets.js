// Sockets for UI code. The page pulls: nothing is read from the network before it asks, so a sender
// waits when the page does; and a write resolves when the system has taken it.
//
// Addresses are numeric texts, with a zone where IPv6 needs one ("fe80::1%eth0"). Failures are
// MethodErrors with the code "socket_error", the system's text as message, and the error's name, such
// as "ECONNREFUSED", as details. What waits on a socket that is closed fails with "ECANCELED".

import { MethodChannel } from './method_channel.js';
import { SealedConnection } from './transfers.js';

const channel = new MethodChannel('engine/sockets');

/**
 * @typedef {{ name: string, index: number, isLoopback: boolean, canMulticast: boolean,
 *             addresses: { address: string, prefix: number }[] }} NetworkInterface
 */

/**
 * The interfaces that are up.
 * @returns {Promise<NetworkInterface[]>}
 */
export function networkInterfaces() {
  return channel.invokeMethod('interfaces');
}

class Socket {
  #handle;

  /** @param {number} handle */
  constructor(handle) {
    this.#handle = handle;
  }

  /**
   * @protected
   * @param {string} method
   * @param {object} [args]
   */
  call(method, args = {}) {
    return channel.invokeMethod(method, { handle: this.#handle, ...args });
  }

  /** @protected */
  get handle() {
    return this.#handle;
  }

  close() {
    return this.call('close');
  }
}

export class UdpSocket extends Socket {
  /**
   * @param {string} address
   * @param {number} port 0 for any
   * @param {{ isShared?: boolean }} [options] with isShared, others may bind the port too
   */
  static async bind(address, port, { isShared = false } = {}) {
    const { handle } = await channel.invokeMethod('udpBind', { address, port, isShared });
    return new UdpSocket(handle);
  }

  /**
   * Joins a multicast group on one interface, and sends to groups from there.
   * @param {string} group
   * @param {string} networkInterface its name
   */
  join(group, networkInterface) {
    return this.call('udpJoin', { group, interface: networkInterface });
  }

  /**
   * @param {Uint8Array} bytes
   * @param {string} address
   * @param {number} port
   */
  send(bytes, address, port) {
    return this.call('udpSend', { bytes, address, port });
  }

  /**
   * Sets the datagram that is sent when the socket closes, also when the page or the program ends; none
   * if it is empty.
   * @param {Uint8Array} bytes
   * @param {string} address
   * @param {number} port
   */
  setFarewell(bytes, address, port) {
    return this.call('udpFarewell', { bytes, address, port });
  }

  /**
   * Has the host send datagrams again and again while the page may sleep, instead of those that it was
   * given before. The first time is after a pause. A socket does not receive what it sends so.
   * @param {{ socket: UdpSocket, bytes: Uint8Array, address: string, port: number }[]} datagrams
   * @param {{ shortest: number, longest: number }} pauses between two times, in milliseconds
   * @returns {Promise<void>}
   */
  static repeat(datagrams, pauses) {
    return channel.invokeMethod('udpRepeat', {
      ...pauses,
      datagrams: datagrams.map(({ socket, ...datagram }) => ({
        handle: socket.handle,
        ...datagram,
      })),
    });
  }

  /** @returns {Promise<{ bytes: Uint8Array, address: string, port: number }>} */
  receive() {
    return this.call('udpReceive');
  }
}

export class TcpListener extends Socket {
  /**
   * @param {number} handle
   * @param {number} port
   */
  constructor(handle, port) {
    super(handle);
    this.port = port;
  }

  /**
   * @param {string} address "::" for all of both families
   * @param {number} port 0 for any
   */
  static async listen(address, port, backlog = 16) {
    const { handle, port: bound } = await channel.invokeMethod('tcpListen', {
      address,
      port,
      backlog,
    });
    return new TcpListener(handle, bound);
  }

  /** @returns {Promise<TcpConnection>} */
  async accept() {
    const { handle, address } = await this.call('tcpAccept');
    return new TcpConnection(handle, address);
  }
}

export class TcpConnection extends Socket {
  /**
   * @param {number} handle
   * @param {string} peer the other side's address
   */
  constructor(handle, peer) {
    super(handle);
    this.peer = peer;
  }

  /**
   * @param {string} address
   * @param {number} port
   * @param {number} limit in milliseconds
   */
  static async connect(address, port, limit = 10_000) {
    const { handle } = await channel.invokeMethod('tcpConnect', { address, port, limit });
    return new TcpConnection(handle, address);
  }

  /**
   * At least `minimum` bytes and at most `maximum`; fewer than the minimum only at the end.
   * @param {number} minimum
   * @param {number} [maximum]
   * @returns {Promise<Uint8Array>}
   */
  read(minimum, maximum = minimum) {
    return this.call('tcpRead', { minimum, maximum });
  }

  /**
   * @param {Uint8Array} bytes
   * @param {Uint8Array | null} [head] leaves before the bytes
   */
  write(bytes, head = null) {
    return this.call('tcpWrite', { head, bytes });
  }

  /**
   * Hands the stream to the host, which seals and opens records on it. From then on only the returned
   * connection may be used.
   * @param {{ send: Uint8Array, receive: Uint8Array }} keys of 32 bytes, for this connection alone
   * @param {number} silence how long the other side may be silent, in milliseconds
   */
  protect(keys, silence) {
    return SealedConnection.over(this.handle, keys, silence);
  }

  /** Sends nothing more; what the other side sends can still be read. */
  finish() {
    return this.call('tcpFinish');
  }
}
