"""A folder of many empty files between two machines of a network of their own, through their windows:
how soon the other person is asked, how long it takes, what the pages hold and for how long they do not
answer. All that is made stays until the end: an ext4 without a journal passes over inodes that were
removed within the last minutes one by one, so the next run would measure that. Needs root:

    PYTHONPATH=scripts /usr/bin/python3 bench/entries_benchmark.py [ENTRIES] [RUNS]
"""

import subprocess
import sys
import time

from copying import LIMIT
from medians import print_medians
from stage.host import wait_until, web_processes_of
from stage.network import Network
from stage.station import Station, acquaint
from usage import PeakMemory, processor_seconds

IN_A_FOLDER = 100


def many_empty(folder, entries):
    """So many files and folders in all."""
    path = folder / "many"
    count = entries - 1
    for number in range(count // (IN_A_FOLDER + 1)):
        inside = path / f"folder {number}"
        inside.mkdir(parents=True)
        for file in range(IN_A_FOLDER):
            (inside / f"file {file}").touch()
    for file in range(count % (IN_A_FOLDER + 1)):
        (path / f"file {file}").touch()
    return path


def seen(station, text):
    """When a window says it, in seconds since 1970."""
    station.sees(text, LIMIT)
    return time.time()


def copied_in(source, target):
    """How long it takes to make the same files with cp and to have the disk keep them, in seconds."""
    began = time.time()
    subprocess.run(["cp", "-r", source, target], check=True)
    subprocess.run(["sync", "-f", target], check=True)
    return time.time() - began


class Watch:
    """What both sides take and how long their pages do not answer, by the step of a transfer."""

    def __init__(self, stations):
        self._stations = stations
        self._memories = [PeakMemory(*web_processes_of(one.process)) for one in stations]
        self.rows = {}
        self._used = {}
        self.step(None)

    def step(self, name):
        for station in self._stations:
            pause = station.longest_pause()
            used = processor_seconds(station.process)
            if name:
                self.rows[f"{name}: longest pause of {station.name}, ms"] = pause
                spent = used - self._used[station.name]
                self.rows[f"{name}: processor time of {station.name}, s"] = spent
            self._used[station.name] = used

    def stop(self):
        for station, memory in zip(self._stations, self._memories):
            self.rows[f"{station.name}'s page at most, MB"] = memory.stop()
        return self.rows


def send_once(stations, source, number):
    sender, receiver = stations
    watch = Watch(stations)
    began = time.time()
    sender.share(source)
    rows = {"shared and shown, s": seen(sender, "many") - began}
    wait_until(lambda: "Adding" not in sender.text(), "adding")
    watch.step("shared")
    began = sender.press(f"Send to {receiver.name}")
    rows["asked after, s"] = seen(receiver, "wants to send you this") - began
    watch.step("asked")
    began = receiver.press("Accept")
    rows["received in, s"] = seen(sender, f"Sent to {receiver.name}") - began
    seen(receiver, "Received from")
    watch.step("received")
    rows["received in, of cp -r"] = rows["received in, s"] / copied_in(
        source, receiver.home / f"copy {number}"
    )
    copy = receiver.received / source.name
    count = sum(1 for _ in copy.rglob("*")) + 1
    expected = sum(1 for _ in source.rglob("*")) + 1
    assert count == expected, f"{count} of {expected} arrived"
    for station in stations:
        station.press("Clear recent transfers")
    copy.rename(receiver.home / f"received {number}")
    return {**rows, **watch.stop()}


def main(entries=100_000, runs=3):
    network = Network("anna", "bob")
    stations = [Station(network, name) for name in ("anna", "bob")]
    try:
        for station in stations:
            station.start()
        acquaint(*stations)
        source = many_empty(stations[0].folder, entries)
        outcomes = [send_once(stations, source, number) for number in range(runs)]
    finally:
        for station in stations:
            station.close()
        network.close()
    print_medians(outcomes, 2)


if __name__ == "__main__":
    main(*map(int, sys.argv[1:]))
