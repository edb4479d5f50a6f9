"""A second implementation of protocol 2, after docs/protocol.md, with Python's `cryptography`.

    peer.py call ADDRESS PORT NAME TEXT   meets that device and sends it a file NAME with that text
    peer.py answer PORT                   announces itself as "python", meets who calls and accepts
    peer.py pretend NAME PORT             announces what device NAME announces, as "Carol" and at an
                                          address where nobody answers, and takes it back again
    peer.py garbage ADDRESS PORT          sends what is no handshake, one connection each

All print JSON lines: the code to compare, who the other side is, what came of it.
"""

import hashlib
import itertools
import json
import os
import socket
import struct
import sys
import threading
import time
import uuid

from cryptography.hazmat.primitives import hashes
from cryptography.hazmat.primitives.asymmetric import ec
from cryptography.hazmat.primitives.ciphers.aead import AESGCM
from cryptography.hazmat.primitives.kdf.hkdf import HKDF
from cryptography.hazmat.primitives.serialization import Encoding, PublicFormat

GROUP = "239.255.77.66"
PORT = 45457
(
    GREETING,
    CONFIRMED,
    OFFER,
    OFFERED,
    HAVE,
    ACCEPTED,
    CHECKED,
    SENT,
    TAKEN,
    RECEIVED,
    END,
    PING,
) = range(1, 13)
CONTENT = 64


def sha256(data):
    return hashlib.sha256(data).digest()


def digest(label, *parts):
    return sha256(b"".join(struct.pack(">I", len(p)) + p for p in (label.encode(), *parts)))


def hkdf(salt, secret, info, size):
    return HKDF(hashes.SHA256(), size, salt, info).derive(secret)


class Key:
    """A P-256 key pair."""

    def __init__(self):
        self._private = ec.generate_private_key(ec.SECP256R1())
        self.public = self._private.public_key().public_bytes(
            Encoding.X962, PublicFormat.UncompressedPoint
        )

    def agree(self, public):
        point = ec.EllipticCurvePublicKey.from_encoded_point(ec.SECP256R1(), public)
        return self._private.exchange(ec.ECDH(), point)

    def agree_lasting(self, public):
        return hkdf(b"Brevanholt-v1", self.agree(public), b"", 32)


class Schedule:
    def __init__(self):
        self.hash = self._chain = sha256(b"Brevanholt 2 P-256 AES-256-GCM SHA-256")
        self._key = None
        self._count = 0

    def mix_hash(self, data):
        self.hash = sha256(self.hash + data)

    def mix_key(self, secret):
        both = hkdf(self._chain, secret, b"", 64)
        self._chain, self._key, self._count = both[:32], AESGCM(both[32:]), 0

    def _nonce(self):
        self._count += 1
        return nonce(self._count - 1)

    def seal(self, text):
        sealed = self._key.encrypt(self._nonce(), text, self.hash)
        self.mix_hash(sealed)
        return sealed

    def open(self, sealed):
        text = self._key.decrypt(self._nonce(), sealed, self.hash)
        self.mix_hash(sealed)
        return text

    def code(self):
        number = int.from_bytes(digest("Brevanholt 2 code", self.hash)[:4], "big")
        return f"{number % 1_000_000:06}"

    def split(self):
        keys = hkdf(self.hash, self._chain, b"Brevanholt 2 keys", 128)
        return [keys[at : at + 32] for at in range(0, 128, 32)]


def nonce(counter):
    return bytes(4) + struct.pack(">Q", counter)


def commitment(share):
    return digest("Brevanholt 2 commitment", share).hex()


class Connection:
    """One side of a connection: the handshake, then records."""

    def __init__(self, stream, identity):
        self.stream = stream
        self.identity = identity
        self._sent = self._received = 0

    def write(self, frame):
        self.stream.sendall(struct.pack(">I", len(frame)) + frame)

    def read(self):
        return self._exactly(struct.unpack(">I", self._exactly(4))[0])

    def _exactly(self, size):
        parts = b""
        while len(parts) < size:
            part = self.stream.recv(size - len(parts))
            if not part:
                raise ConnectionError("the other side hung up")
            parts += part
        return parts

    def call(self):
        schedule, own, lasting = Schedule(), Key(), self.identity.key
        first = json.dumps({"brevanholt": [2], "commitment": commitment(own.public)}).encode()
        schedule.mix_hash(first)
        self.write(first)
        second = self.read()
        share = bytes.fromhex(json.loads(second)["share"])
        schedule.mix_hash(second)
        schedule.mix_hash(own.public)
        self.write(own.public)
        self.code = schedule.code()
        schedule.mix_key(own.agree(share))
        fourth = self.read()
        self.peer_key = schedule.open(fourth[:81])
        schedule.mix_key(own.agree_lasting(self.peer_key))
        self.peer = json.loads(schedule.open(fourth[81:]))
        sealed = schedule.seal(lasting.public)
        schedule.mix_key(lasting.agree_lasting(share))
        schedule.mix_key(lasting.agree_lasting(self.peer_key))
        self.write(sealed + schedule.seal(self.identity.party))
        self._outgoing, self._incoming, confirms, expects = schedule.split()
        self._confirm(confirms, schedule.hash)
        self._expect_confirmation(expects, schedule.hash)

    def answer(self):
        schedule, own, lasting = Schedule(), Key(), self.identity.key
        first = self.read()
        schedule.mix_hash(first)
        second = json.dumps({"brevanholt": 2, "share": own.public.hex()}).encode()
        schedule.mix_hash(second)
        self.write(second)
        share = self.read()
        assert commitment(share) == json.loads(first)["commitment"]
        schedule.mix_hash(share)
        self.code = schedule.code()
        schedule.mix_key(own.agree(share))
        sealed = schedule.seal(lasting.public)
        schedule.mix_key(lasting.agree_lasting(share))
        self.write(sealed + schedule.seal(self.identity.party))
        fifth = self.read()
        self.peer_key = schedule.open(fifth[:81])
        schedule.mix_key(own.agree_lasting(self.peer_key))
        schedule.mix_key(lasting.agree_lasting(self.peer_key))
        self.peer = json.loads(schedule.open(fifth[81:]))
        self._incoming, self._outgoing, expects, confirms = schedule.split()
        self._expect_confirmation(expects, schedule.hash)
        self._confirm(confirms, schedule.hash)

    def _confirm(self, key, text):
        iv = os.urandom(12)
        self.write(iv + AESGCM(key).encrypt(iv, text, None))

    def _expect_confirmation(self, key, text):
        sealed = self.read()
        assert AESGCM(key).decrypt(sealed[:12], sealed[12:], None) == text

    def send(self, kind, body=b""):
        body = body if isinstance(body, bytes) else json.dumps(body).encode()
        header = struct.pack(">IB3x", 4 + len(body) + 16, kind)
        sealed = AESGCM(self._outgoing).encrypt(nonce(self._sent), body, header)
        self._sent += 1
        self.stream.sendall(header + sealed)

    def receive(self):
        """The next record other than a ping."""
        while True:
            frame = self.read()
            header = struct.pack(">I", len(frame)) + frame[:4]
            body = AESGCM(self._incoming).decrypt(nonce(self._received), frame[4:], header)
            self._received += 1
            if frame[0] != PING:
                return frame[0], body

    def expect(self, kind):
        got, body = self.receive()
        if got != kind:
            raise ConnectionError(f"{kind} was expected, {got} came: {body[:200]!r}")
        return body

    def meet(self):
        """Greets as a stranger, and says that the codes match."""
        self.send(GREETING, {"knows": False})
        self.expect(GREETING)
        self.send(CONFIRMED)
        self.expect(CONFIRMED)


class Identity:
    def __init__(self, name):
        self.key = Key()
        self.id = str(uuid.uuid4())
        self.name = name
        self.party = json.dumps({"id": self.id, "name": name}).encode().ljust(512)

    def announcement(self, port, **changes):
        said = {"brevanholt": 2, "kind": "here", "id": self.id, "name": self.name, "port": port}
        return json.dumps({**said, "key": self.key.public.hex(), **changes}).encode()


def multicast():
    sender = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
    sender.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
    sender.bind(("", PORT))
    interface = struct.pack("=4s4si", bytes(4), bytes(4), socket.if_nametoindex("eth0"))
    sender.setsockopt(socket.IPPROTO_IP, socket.IP_MULTICAST_IF, interface)
    return sender


def say(**what):
    print(json.dumps(what), flush=True)


def call(address, port, name, text):
    connection = Connection(socket.create_connection((address, int(port)), 10), Identity("python"))
    connection.stream.settimeout(60)
    connection.call()
    say(code=connection.code, peer=connection.peer["name"])
    connection.meet()
    content = text.encode()
    connection.send(OFFER, [[0, name, len(content), 1_700_000_000_000]])
    transfer = {"transfer": os.urandom(16).hex(), "entries": 1, "bytes": len(content)}
    connection.send(OFFERED, transfer)
    connection.expect(ACCEPTED)
    connection.send(CONTENT, struct.pack(">IIQ", 0, len(content), 0) + content)
    connection.send(CHECKED, {"upTo": 0, "failed": []})
    connection.send(SENT)
    while (record := connection.receive())[0] == TAKEN:
        pass
    say(ended=record[0] == RECEIVED)


def answer(port):
    identity = Identity("python")
    listener = socket.create_server(("", int(port)))
    announcer = multicast()
    over = threading.Event()

    def announce():
        while not over.wait(0.5):
            announcer.sendto(identity.announcement(int(port)), (GROUP, PORT))

    threading.Thread(target=announce, daemon=True).start()
    connection = Connection(listener.accept()[0], identity)
    connection.stream.settimeout(60)
    connection.answer()
    say(code=connection.code, peer=connection.peer["name"])
    connection.meet()
    manifest = []
    while (record := connection.receive())[0] == OFFER:
        manifest += json.loads(record[1])
    connection.send(ACCEPTED)
    content = b""
    while (record := connection.receive())[0] != SENT:
        if record[0] == CONTENT:
            content += record[1][16:]
    connection.send(RECEIVED)
    over.set()
    say(manifest=manifest, text=content.decode())


def pretend(name, port):
    ear = multicast()
    membership = struct.pack(
        "=4s4si", socket.inet_aton(GROUP), bytes(4), socket.if_nametoindex("eth0")
    )
    ear.setsockopt(socket.IPPROTO_IP, socket.IP_ADD_MEMBERSHIP, membership)
    heard = {}
    while heard.get("name") != name:
        heard = json.loads(ear.recv(2000))
    false = {**heard, "name": "Carol", "port": int(port)}
    with socket.create_server(("", int(port))):
        for number in itertools.count():
            for said in (false, {**false, "kind": "bye"}, false):
                ear.sendto(json.dumps(said).encode(), (GROUP, PORT))
            if number == 20:
                say(pretends=True)
            time.sleep(0.1)


def garbage(address, port):
    closed = []
    for name, content in {
        "bytes": os.urandom(1 << 16),
        "request": b"GET / HTTP/1.1\r\n\r\n",
        "size": b"\xff\xff\xff\xff",
    }.items():
        with socket.create_connection((address, int(port)), 10) as connection:
            connection.settimeout(10)
            try:
                connection.sendall(content)
                while connection.recv(1 << 16):
                    pass
                closed.append(name)
            except ConnectionError:
                closed.append(name)
            except TimeoutError:
                pass
    say(closed=closed)


if __name__ == "__main__":
    {"call": call, "answer": answer, "pretend": pretend, "garbage": garbage}[sys.argv[1]](
        *sys.argv[2:]
    )
