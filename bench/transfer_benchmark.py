"""One large file between two machines of a network of their own, in turns with scp. Needs root and
Debian's openssh-server:

    /usr/bin/python3 bench/transfer_benchmark.py [MEBIBYTES] [RUNS]
"""

import os
import pathlib
import re
import shutil
import statistics
import subprocess
import sys
import tempfile
import threading
import time

SOURCE = pathlib.Path(__file__).resolve().parents[1]
sys.path[:0] = [str(SOURCE / "tests/endtoend"), str(SOURCE / "tests/endtoend/neighbours")]
from host import wait_until  # noqa: E402  (found by the line above)
from network import Network  # noqa: E402
from station import Station  # noqa: E402

LIMIT = 600


class PeakMemory:
    """The most memory, in MB, that a process and all below it hold together while this runs."""

    def __init__(self, process):
        self.largest = 0
        self._process = process
        self._over = threading.Event()
        self._thread = threading.Thread(target=self._watch)
        self._thread.start()

    def stop(self):
        self._over.set()
        self._thread.join()
        return self.largest

    def _watch(self):
        while not self._over.wait(0.2):
            self.largest = max(self.largest, sum(map(memory_of, below(self._process))) / 1000)


def below(process):
    """A process and its descendants."""
    family = [process]
    for one in family:
        family += map(
            int,
            subprocess.run(
                ["pgrep", "-P", str(one)], capture_output=True, text=True, check=False
            ).stdout.split(),
        )
    return family


def memory_of(process):
    """Its share of what it holds, in kB."""
    try:
        rollup = pathlib.Path(f"/proc/{process}/smaps_rollup").read_text()
    except (FileNotFoundError, ProcessLookupError):
        return 0
    return int(re.search(r"^Pss: *(\d+)", rollup, re.MULTILINE)[1])


class SecureCopy:
    """scp from one machine to a server on another."""

    def __init__(self, network, sender, receiver):
        self._folder = pathlib.Path(tempfile.mkdtemp(prefix="brevanholt-scp-"))
        for key in ("host", "user"):
            subprocess.run(
                ["ssh-keygen", "-q", "-t", "ed25519", "-N", "", "-f", self._folder / key],
                check=True,
            )
        pathlib.Path("/run/sshd").mkdir(exist_ok=True)
        options = {
            "Port": 2222,
            "HostKey": self._folder / "host",
            "PidFile": "none",
            "UsePAM": "no",
            "AuthorizedKeysFile": self._folder / "user.pub",
            "StrictModes": "no",
            "PermitRootLogin": "yes",
            "Subsystem": "sftp internal-sftp",
        }
        self._server = subprocess.Popen(
            network.command(
                receiver,
                "/usr/sbin/sshd",
                "-D",
                "-f",
                "/dev/null",
                *(part for option in options.items() for part in ("-o", "{}={}".format(*option))),
            )
        )
        self._command = network.command(
            sender,
            "scp",
            "-q",
            "-P",
            "2222",
            "-i",
            str(self._folder / "user"),
            "-o",
            "StrictHostKeyChecking=no",
            "-o",
            "UserKnownHostsFile=/dev/null",
            "-o",
            "LogLevel=ERROR",
        )
        self._target = f"root@{network.address_of(receiver)}:{self._folder}/copy"
        small = self._folder / "small"
        small.touch()
        wait_until(lambda: self._run(small).returncode == 0, "the server", 20)

    def _run(self, file):
        return subprocess.run(
            [*self._command, str(file), self._target],
            check=False,
            timeout=LIMIT,
            stderr=subprocess.DEVNULL,
        )

    def seconds(self, file):
        began = time.monotonic()
        self._run(file).check_returncode()
        took = time.monotonic() - began
        os.unlink(self._folder / "copy")
        return took

    def close(self):
        self._server.kill()
        self._server.wait()
        shutil.rmtree(self._folder)


def become_acquainted(sender, receiver):
    sender.share_text("hello")
    sender.press(f"Send to {receiver.name}")
    for station in (sender, receiver):
        station.press("They match")
    receiver.press("Accept")
    sender.sees(f"Sent to {receiver.name}")
    sender.press("Clear recent transfers")


def seconds_to_send(file, sender, receiver):
    sender.share(file)
    sender.press(f"Send to {receiver.name}")
    receiver.sees("wants to send you this")
    receiver.press("Accept")
    began = time.monotonic()
    while f"Sent to {receiver.name}" not in sender.text():
        assert time.monotonic() < began + LIMIT, sender.text()
        time.sleep(0.2)  # looking costs the page time
    took = time.monotonic() - began
    sender.press("Clear recent transfers")
    os.unlink(receiver.received / file.name)
    return took


def row(name, values, unit):
    print(
        f"{name:40} {statistics.median(values):8.2f} {unit:5}"
        f" ({min(values):.2f} to {max(values):.2f})",
        flush=True,
    )


def measure(network, megabytes, runs):
    stations = [Station(network, name) for name in ("anna", "bob")]
    copy = SecureCopy(network, "anna", "bob")
    try:
        for station in stations:
            station.start()
        become_acquainted(*stations)
        file = stations[0].folder / "large.bin"
        with open(file, "wb") as large:
            for _ in range(megabytes):
                large.write(os.urandom(1 << 20))
        times = [(seconds_to_send(file, *stations), copy.seconds(file)) for _ in range(runs)]
        size = file.stat().st_size / 1e6
        row("sent, MB/s", [size / ours for ours, _ in times], "MB/s")
        row("scp, MB/s", [size / theirs for _, theirs in times], "MB/s")
        row("time, of scp's", [ours / theirs for ours, theirs in times], "")
        # In a run of its own: looking costs the system time.
        memories = [PeakMemory(station.process) for station in stations]
        seconds_to_send(file, *stations)
        for name, memory in zip(("sender", "receiver"), memories):
            row(f"the {name}'s peak memory", [memory.stop()], "MB")
    finally:
        copy.close()
        for station in stations:
            station.close()


if __name__ == "__main__":
    given = [int(argument) for argument in sys.argv[1:]]
    net = Network("anna", "bob")
    try:
        measure(net, *given, *(2048, 3)[len(given) :])
    finally:
        net.close()
