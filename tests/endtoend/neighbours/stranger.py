"""A third machine that means no good. As a program, on that machine:

    stranger.py ADDRESS PORT FILE...    sends each file's bytes to the port, one connection each
"""

import pathlib
import socket
import struct
import subprocess
import sys

TCP = 6


class Wiretap:
    """Records the TCP payloads on one cable of the switch while it is open."""

    def __init__(self, network, machine, recorded):
        self._file = recorded
        self._process = subprocess.Popen(
            [
                "nsenter",
                f"--net=/run/netns/{network.namespace('switch')}",
                sys.executable,
                __file__,
                "--record",
                machine,
                str(recorded),
            ],
            stdout=subprocess.PIPE,
        )
        self._process.stdout.readline()  # it listens

    def close(self):
        """What was sent to each port, longest first."""
        self._process.terminate()
        self._process.communicate(timeout=30)
        return sorted(_streams(self._file.read_bytes()).items(), key=lambda one: -len(one[1]))


def _streams(recorded):
    """The payloads by (address, port) of the receiver, put together in order."""
    pieces = {}
    at = 0
    while at < len(recorded):
        (size,) = struct.unpack_from(">I", recorded, at)
        frame = recorded[at + 4 : at + 4 + size]
        at += 4 + size
        if frame[12:14] == b"\x08\x00" and frame[23] == TCP:
            header, address = 14 + (frame[14] & 15) * 4, frame[30:34]
            end = 14 + struct.unpack_from(">H", frame, 16)[0]
        elif frame[12:14] == b"\x86\xdd" and frame[20] == TCP:
            header, address = 54, frame[38:54]
            end = header + struct.unpack_from(">H", frame, 18)[0]
        else:
            continue
        (sequence,) = struct.unpack_from(">I", frame, header + 4)
        payload = frame[header + (frame[header + 12] >> 4) * 4 : end]
        target = (address, struct.unpack_from(">H", frame, header + 2)[0])
        if payload:
            pieces.setdefault(target, {})[sequence] = payload
    return {
        target: b"".join(parts[key] for key in sorted(parts)) for target, parts in pieces.items()
    }


def _record(interface, path):
    tap = socket.socket(socket.AF_PACKET, socket.SOCK_RAW, socket.htons(3))
    tap.bind((interface, 0))
    print("listening", flush=True)
    with open(path, "wb", buffering=0) as recorded:
        while True:
            frame = tap.recv(1 << 17)
            recorded.write(struct.pack(">I", len(frame)) + frame)


def _send(address, port, content):
    with socket.create_connection((address, port), 10) as connection:
        connection.settimeout(10)
        try:
            connection.sendall(content)
            while connection.recv(1 << 16):
                pass
            return "closed"
        except ConnectionError:
            return "closed"
        except TimeoutError:
            return "open"


if __name__ == "__main__":
    if sys.argv[1] == "--record":
        _record(*sys.argv[2:])
    for name in sys.argv[3:]:
        print(_send(sys.argv[1], int(sys.argv[2]), pathlib.Path(name).read_bytes()))
