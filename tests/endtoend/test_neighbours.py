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


from stage.host import wait_until
from stage.network import Network, enter_with_rights, is_permitted
from stage.station import Station
from peer import PORT
from tray import PICTURES

# The whole size takes a while; it is for looking at by hand.
LARGE = int(os.environ.get("BREVANHOLT_LARGE", 64 << 20))
PEER = str(pathlib.Path(__file__).parent / "peer.py")


def digest_of(path):
    with open(path, "rb") as file:
        return hashlib.file_digest(file, "sha256").digest()


def hashes(folder):
    """What is below a folder: the hash of each file, and None for each folder."""
    return {
        str(path.relative_to(folder)): digest_of(path) if path.is_file() else None
        for path in folder.rglob("*")
    }


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
    (folder / 'it\'s "100 %41" $HOME `x`.txt').write_text("quotes")
    (folder / "Füße — 日本語 🙂.txt").write_text("letters")
    return folder


enter_with_rights()


@unittest.skipUnless(is_permitted(), "needs to make network namespaces")
class NeighboursTest(unittest.TestCase):
    def setUp(self):
        self.network = Network("anna", "bob", "eve")
        self.addCleanup(self.network.close)
        # Transfers last long enough to be looked at and disturbed.
        for machine in ("anna", "bob"):
            self.network.slow_down(machine, "200mbit")

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
        bob.sees("Received from anna")
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

    def python(self, *arguments):
        """The protocol's other implementation, on the third machine."""
        command = self.network.command("eve", sys.executable, PEER, *arguments)
        process = subprocess.Popen(command, stdout=subprocess.PIPE, text=True)
        self.addCleanup(lambda: (process.kill(), process.communicate(timeout=30)))
        return process

    @staticmethod
    def heard(process):
        return json.loads(process.stdout.readline())

    def sent_bytes(self, machine):
        """What has left a machine so far."""
        counter = "/sys/class/net/eth0/statistics/tx_bytes"
        command = self.network.command(machine, "sh", "-c", f"mount -t sysfs s /sys; cat {counter}")
        return int(subprocess.run(command, check=True, capture_output=True).stdout)

    @staticmethod
    def received_so_far(station):
        """How many bytes a station has, in files that are whole and in those that are not."""
        scratch = [path.stat().st_size for path in station.home.rglob("*.part")]
        whole = [path.stat().st_size for path in station.received.rglob("*.bin")]
        return sum(scratch) + sum(whole)

    def wait_for_progress(self, station):
        wait_until(lambda: "/s" in station.text(), "progress")

    def full(self, folder, size):
        """Mounts a small file system on the folder."""
        folder.mkdir(parents=True, exist_ok=True)
        subprocess.run(["mount", "-t", "tmpfs", "-o", f"size={size}", "none", folder], check=True)
        self.addCleanup(subprocess.run, ["umount", "--lazy", folder], check=True)

    def test_sends_files_folders_and_text(self):
        anna, bob = self.station("anna"), self.station("bob")
        anna.start()
        anna.sees("No devices found")
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
        anna.sees("No devices found", 15)
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
            bob.sees("Brevanholt was closed before this finished.")
            self.assertNotIn("huge.bin", hashes(bob.received))
            bob.press("Remove huge.bin from the list")
            wait_until(lambda: not list(bob.home.rglob("*.part")), "the scratch file to go")
        with self.subTest("the disk is full"):
            bob.stop()
            for folder in (bob.home / "Downloads", bob.home / ".cache"):
                self.full(folder, "256m")
            bob.start()
            anna.share(huge)
            anna.press("Send to bob")
            bob.sees("There is not enough space on the disk (")
            bob.press("Decline")
            self.send(anna, bob, large)
            self.wait_for_progress(bob)
            filler = bob.home / ".cache/filler"
            subprocess.run(["cp", "/dev/zero", filler], check=False, capture_output=True)
            bob.sees("There is not enough space on the disk.")
            anna.sees("There is not enough space on the disk of bob.")
            self.assertEqual(hashes(bob.received), {})
            self.assertEqual(list(bob.home.rglob("*.part")), [])

    def test_goes_on_where_it_ended(self):
        anna, bob = self.pair()
        folder = anna.folder / "Recordings"
        folder.mkdir()
        random_file(folder / "a.bin", 150 << 20)
        random_file(folder / "b.bin", 150 << 20)
        os.utime(folder / "a.bin", (1_600_000_000, 1_600_000_000))
        (folder / "2026-11-23 07:30:12.ogg").write_text("half past seven")
        (folder / "away.txt").write_text("soon gone")
        anna.share(folder)
        anna.sees("Recordings")
        (folder / "away.txt").unlink()
        wanted = {name: digest_of(folder / name) for name in ("a.bin", "b.bin")}
        with self.subTest("the receiver is killed"):
            anna.press("Send to bob")
            bob.press("Accept")
            wait_until(lambda: self.received_so_far(bob) > 160 << 20, "more than the first file")
            bob.stop(signal.SIGKILL)
            anna.sees("The connection was lost.", 30)
            before = self.sent_bytes("anna")
            bob.start()
            anna.sees("Known device")
            anna.press("Try again")
            bob.sees("Received from anna")
            anna.sees("did not arrive: away.txt could not be read")
            self.assertLess(self.sent_bytes("anna") - before, 190 << 20)
            for name, digest in wanted.items():
                self.assertEqual(digest_of(bob.received / "Recordings" / name), digest)
            self.assertEqual(
                (bob.received / "Recordings/2026-11-23 07-30-12.ogg").read_text(), "half past seven"
            )
            arrived = (bob.received / "Recordings/a.bin").stat()
            self.assertEqual((arrived.st_mtime, arrived.st_mode & 0o777), (1_600_000_000, 0o644))
            self.assertEqual(list(bob.home.rglob("*.part")), [])
        with self.subTest("a file changes, and the sender pauses"):
            changing = random_file(anna.folder / "changing.bin", 200 << 20)
            anna.share(changing)
            anna.press("Send to bob")
            bob.press("Accept")
            self.wait_for_progress(bob)
            anna.press("Pause changing.bin")
            bob.sees("Paused on anna.")
            self.assertEqual(len(list(bob.home.rglob("*.part"))), 1)
            with open(changing, "r+b") as file:
                file.write(b"changed")
            anna.press("Resume changing.bin")
            bob.press("Accept")
            anna.sees("changing.bin Sent to bob")
            self.assertEqual(digest_of(bob.received / "changing.bin"), digest_of(changing))

    def test_speaks_with_an_implementation_of_its_own(self):
        bob = self.station("bob")
        bob.start()
        port = re.search(r":(\d+)\b", bob.run("ss", "-Hltn", "sport", ">=", ":1024"))[1]
        self.assertEqual(port, "45457")
        caller = self.python("call", self.network.address_of("bob"), port, "note.txt", "in Python")
        self.assertEqual(self.heard(caller)["peer"], "bob")
        bob.sees("Is the same code shown on python?")
        bob.press("They match")
        bob.press("Accept")
        self.assertEqual(self.heard(caller), {"ended": True})
        self.assertEqual((bob.received / "note.txt").read_text(), "in Python")

        answerer = self.python("answer", "4711")
        bob.share_text("from bob")
        bob.press("Send to python (not the one you know)")
        code = self.heard(answerer)["code"]
        bob.sees(f"{code[:3]} {code[3:]}")
        bob.press("They match")
        self.assertEqual(self.heard(answerer)["text"], "from bob")
        bob.sees("Sent to python")

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
        self.assertLess(
            kept["content"][0]["when"] / 1000, time.time() - 300 * 86400, "the clock was wrong"
        )

    def test_is_not_moved_by_strangers(self):
        anna, bob = self.pair()
        secret = anna.folder / "secret.txt"
        secret.write_text("for bob alone")
        before = bob.text()
        garbage = self.python("garbage", self.network.address_of("bob"), str(PORT))
        self.assertEqual(self.heard(garbage)["closed"], ["bytes", "request", "size"])
        self.assertEqual(bob.text(), before)
        anna.sees("Known device")
        self.assertEqual(self.heard(self.python("pretend", "bob", "4711")), {"pretends": True})
        self.assertIn("bob Known device", anna.text())
        self.assertNotIn("Carol", anna.text())
        self.send(anna, bob, secret)
        wait_until((bob.received / "secret.txt").exists, "the file")


if __name__ == "__main__":
    unittest.main(verbosity=2)
