"""Two machines on one network, and a third one: the program that ships, used through its window."""

import hashlib
import json
import os
import pathlib
import re
import signal
import subprocess
import sys
import time
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).parent / "neighbours"))

from host import wait_until
from network import Network, enter_with_rights, is_permitted
from station import Station
from stranger import Wiretap
from tray import PICTURES

# The whole size takes a while; it is for looking at by hand.
LARGE = int(os.environ.get("BREVANHOLT_LARGE", 64 << 20))
STRANGER = str(pathlib.Path(__file__).parent / "neighbours/stranger.py")


def digest_of(path):
    with open(path, "rb") as file:
        return hashlib.file_digest(file, "sha256").digest()


def hashes(folder):
    """What is below a folder: the hash of each file, and None for each folder."""
    return {str(path.relative_to(folder)):
            digest_of(path) if path.is_file() else None for path in folder.rglob("*")}


def random_file(path, size):
    with open(path, "wb") as file:
        while size > 0:
            size -= file.write(os.urandom(min(size, 1 << 24)))
    return path


def make_tree(folder):
    """A thousand files, an empty folder, an empty file, and names that are hard to quote."""
    for number in range(997):
        path = folder / f"{number % 10}" / f"{number}.bin"
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_bytes(os.urandom(number * 40))
    (folder / "empty/inside").mkdir(parents=True)
    (folder / "nothing").touch()
    (folder / "it's \"100 %41\" $HOME `x`.txt").write_text("quotes")
    (folder / "Füße — 日本語 🙂.txt").write_text("letters")
    return folder


enter_with_rights()


@unittest.skipUnless(is_permitted(), "needs to make network namespaces")
class NeighboursTest(unittest.TestCase):

    def setUp(self):
        self.network = Network("anna", "bob", "eve")
        self.addCleanup(self.network.close)

    def station(self, name, **how):
        station = Station(self.network, name, **how)
        self.addCleanup(station.close)
        return station

    def pair(self):
        """Two stations that have met, and know each other's keys."""
        anna, bob = self.station("anna"), self.station("bob")
        anna.start()
        bob.start()
        anna.share_text("hello")
        anna.press("Send to bob")
        self.compare(anna, bob)
        bob.press("Accept")
        anna.sees("Sent to bob")
        return anna, bob

    def compare(self, *stations):
        """Compares the codes as two persons would."""
        codes = []
        for station in stations:
            station.sees("Is the same code shown on")
            codes.append(re.search(r"\b(\d{3})\s*(\d{3})\b", station.text()).groups())
        self.assertEqual(codes[0], codes[1])
        for station in stations:
            station.press("They match")

    def send(self, sender, receiver, *files):
        sender.share(*files)
        sender.press(f"Send to {receiver.name}")
        receiver.press("Accept")

    def wait_for_progress(self, station):
        wait_until(lambda: "/s" in station.text(), "progress")

    def full(self, folder, size):
        """Puts a small disk of its own where the folder is."""
        folder.mkdir(parents=True, exist_ok=True)
        subprocess.run(["mount", "-t", "tmpfs", "-o", f"size={size}", "none", folder], check=True)
        self.addCleanup(subprocess.run, ["umount", "--lazy", folder], check=True)

    def test_sends_files_folders_and_text(self):
        anna, bob = self.station("anna"), self.station("bob")
        anna.start()
        anna.sees("Nobody is nearby yet")
        anna.screenshot(PICTURES / "neighbours-1-alone.png")
        bob.start()
        anna.sees("bob", 2)
        bob.sees("anna", 2)

        tree = make_tree(anna.folder / "Holiday 2026")
        large = random_file(anna.folder / "film.mkv", LARGE)
        anna.share(tree, large)
        anna.share_text("See you at eight? <b>Bring</b> “cake”.")
        anna.sees("Holiday 2026")
        anna.sees("film.mkv")
        anna.screenshot(PICTURES / "neighbours-2-ready.png")
        anna.press("Send to bob")
        anna.sees("Is the same code shown on bob?")
        bob.screenshot(PICTURES / "neighbours-3-code.png")
        self.compare(anna, bob)
        bob.sees("anna wants to send you this")
        bob.screenshot(PICTURES / "neighbours-4-asked.png")
        bob.press("Accept")
        self.wait_for_progress(bob)
        bob.screenshot(PICTURES / "neighbours-5-receiving.png", is_settled=False)
        anna.screenshot(PICTURES / "neighbours-5-sending.png", is_settled=False)
        anna.sees("Sent to bob", 200)
        bob.sees("Received from anna")
        bob.sees("See you at eight? <b>Bring</b> “cake”.")
        anna.screenshot(PICTURES / "neighbours-6-sent.png")
        bob.screenshot(PICTURES / "neighbours-6-received.png")
        self.assertEqual(hashes(bob.received / tree.name), hashes(tree))
        self.assertEqual(hashes(bob.received)["film.mkv"], hashes(anna.folder)["film.mkv"])

        bob.stop()
        anna.sees("Nobody is nearby yet", 15)
        bob.start()
        bob.sees("Received from anna")
        anna.sees("Known device")
        anna.share(tree / "nothing")
        anna.press("Send to bob")
        bob.press("Accept")
        bob.sees("nothing")
        wait_until((bob.received / "nothing").exists, "the empty file")

    def test_tells_of_faults_and_publishes_nothing_half(self):
        anna, bob = self.pair()
        large = random_file(anna.folder / "large.bin", 192 << 20)
        huge = anna.folder / "huge.bin"
        huge.touch()
        os.truncate(huge, 3 << 30)

        with self.subTest("declined"):
            anna.share(large)
            anna.press("Send to bob")
            bob.press("Decline")
            anna.sees("bob declined")
        with self.subTest("the link goes down"):
            anna.press("Try again")
            bob.press("Accept")
            self.wait_for_progress(bob)
            self.network.plug("bob", False)
            time.sleep(5)
            self.network.plug("bob", True)
            bob.sees("large.bin Received from anna", 90)
            self.assertEqual(hashes(bob.received)["large.bin"], hashes(anna.folder)["large.bin"])
        with self.subTest("both at once"):
            other = random_file(bob.folder / "other.bin", 64 << 20)
            for one, to, what in ((anna, bob, large), (bob, anna, other)):
                one.share(what)
                one.press(f"Send to {to.name}")
            anna.press("Accept")
            bob.press("Accept")
            wait_until((anna.received / "other.bin").exists, "what bob sent")
            wait_until((bob.received / "large (1).bin").exists, "what anna sent")
            self.assertEqual(hashes(anna.received)["other.bin"], hashes(bob.folder)["other.bin"])
        with self.subTest("killed"):
            self.send(anna, bob, huge)
            self.wait_for_progress(bob)
            bob.stop(signal.SIGKILL)
            anna.sees("The connection was lost.", 30)
            anna.screenshot(PICTURES / "neighbours-lost.png")
            bob.start()
            bob.sees("The program ended before it was done.")
            self.assertNotIn("huge.bin", hashes(bob.received))
            self.assertEqual(list(bob.home.rglob("*huge.bin")), [])
        with self.subTest("the disk is full"):
            bob.stop()
            for folder in (bob.home / "Downloads", bob.home / ".cache"):
                self.full(folder, "256m")
            bob.start()
            self.send(anna, bob, huge)
            bob.sees("There is not enough space on the disk.")
            anna.sees("There is not enough space on the other device’s disk.")
            self.assertEqual(hashes(bob.received), {})
            self.assertEqual(list(bob.home.rglob("*huge.bin")), [])

    def test_works_with_a_clock_that_is_wrong(self):
        anna = self.station("anna", wrapper=("faketime", "-f", "-400d"))
        bob = self.station("bob")
        anna.start()
        bob.start()
        note = anna.folder / "note.txt"
        note.write_text("a year late")
        anna.share(note)
        anna.press("Send to bob")
        self.compare(anna, bob)
        bob.press("Accept")
        anna.sees("note.txt Sent to bob")
        self.assertEqual((bob.received / "note.txt").read_text(), "a year late")
        kept = json.loads(next(anna.home.rglob("transfers.json")).read_text())
        self.assertLess(kept[0]["when"] / 1000, time.time() - 300 * 86400, "the clock was wrong")

    def test_is_not_moved_by_strangers(self):
        anna, bob = self.pair()
        secret = anna.folder / "secret.txt"
        secret.write_text("for bob alone " * 100)
        tap = Wiretap(self.network, "bob", anna.folder / "recorded")
        self.send(anna, bob, secret)
        anna.sees("secret.txt Sent to bob")
        bob.sees("secret.txt Received from anna")
        (_address, port), said = next(
            one for one in tap.close() if one[1][4:].startswith(b'{"brevanholt":[1]'))
        self.assertNotIn(b"for bob alone", said)
        before = bob.text()

        attacks = {"replay": said, "garbage": os.urandom(1 << 16), "request": b"GET / HTTP/1.1\r\n\r\n",
                   "size": b"\xff\xff\xff\xff", "half": said[:100]}
        for name, content in attacks.items():
            (anna.folder / name).write_bytes(content)
        outcome = subprocess.run(
            self.network.command("eve", sys.executable, STRANGER, self.network.address_of("bob"),
                                 str(port), *(str(anna.folder / name) for name in attacks)),
            check=True, capture_output=True, text=True, timeout=120).stdout
        self.assertEqual(outcome.split()[:4], ["closed"] * 4)
        self.assertEqual(bob.text(), before)
        self.send(anna, bob, secret)
        wait_until((bob.received / "secret (1).txt").exists, "the file once more")


if __name__ == "__main__":
    unittest.main(verbosity=2)
