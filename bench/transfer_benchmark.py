"""Transfers between two machines of a network of their own, in turns with other ways to bring files
from one to the other. Needs root and `scripts/packages bench`:

    PYTHONPATH=scripts /usr/bin/python3 bench/transfer_benchmark.py [RUNS] [MEBIBYTES] [FILES]
"""

import os
import random
import shutil
import statistics
import sys
import time

from copying import LIMIT, OtherWays
from stage.network import Network
from stage.station import Station, acquaint
from usage import PeakMemory, processor_seconds

PAUSE = 3  # seconds in which the system ends what the run before began


class Brevanholt:
    """The program as it ships, driven through its window."""

    name = "Brevanholt"

    def __init__(self, network):
        self.stations = [Station(network, name) for name in ("anna", "bob")]
        for station in self.stations:
            station.start()
        acquaint(*self.stations)

    def send(self, source):
        sender, receiver = self.stations
        sender.share(source)
        sender.press(f"Send to {receiver.name}")
        receiver.sees("wants to send you this")
        used = sum(processor_seconds(station.process) for station in self.stations)
        began = receiver.press("Accept")
        while f"Sent to {receiver.name}" not in sender.text():
            assert time.time() < began + LIMIT, sender.text()
            time.sleep(0.1)  # looking costs the page time
        took = time.time() - began
        used = sum(processor_seconds(station.process) for station in self.stations) - used
        sender.press("Clear recent transfers")
        receiver.press("Clear recent transfers")
        copy = receiver.received / source.name
        shutil.rmtree(copy) if copy.is_dir() else copy.unlink()
        return took, used

    def close(self):
        for station in self.stations:
            station.close()


def large_file(folder, mebibytes):
    path = folder / "large.bin"
    with open(path, "wb") as file:
        for _ in range(mebibytes):
            file.write(os.urandom(1 << 20))
    return path


def many_files(folder, count):
    """Files of 4 to 64 KiB, the same each time."""
    sizes = random.Random(1)
    path = folder / "many"
    path.mkdir()
    for number in range(count):
        (path / f"{number}.bin").write_bytes(os.urandom(sizes.randint(4 << 10, 64 << 10)))
    return path


def size_of(source):
    files = source.iterdir() if source.is_dir() else [source]
    return sum(file.stat().st_size for file in files) / 1e6


def told(values, places=2):
    lowest, highest = min(values), max(values)
    return f"{statistics.median(values):.{places}f} ({lowest:.{places}f} to {highest:.{places}f})"


def compare(ways, source, runs):
    """Each way's time and processor time for one source, in turns."""
    outcomes = {way.name: [] for way in ways}
    for run in range(runs):
        first = run % len(ways)  # another one each time
        for way in (*ways[first:], *ways[:first]):
            os.sync()
            time.sleep(PAUSE)
            outcomes[way.name].append(way.send(source))
    bound = [took for took, _used in outcomes["the bound"]]
    print(f"\n{source.name}, {size_of(source):.0f} MB")
    print(f"{'':28}{'seconds':>24}{'processor seconds':>24}{'of the bound':>24}")
    for name, results in outcomes.items():
        ratios = [took / least for (took, _used), least in zip(results, bound)]
        columns = (told(column) for column in (*zip(*results), ratios))
        print(f"{name:28}" + "".join(f"{column:>24}" for column in columns), flush=True)


def peaks(ours, others, source):
    """Most memory of each side; in runs of their own, because looking costs the system time."""
    memories = [PeakMemory(station.process) for station in ours.stations]
    ours.send(source)
    print(f"{ours.name:28}" + "".join(f"{memory.stop():10.0f} MB" for memory in memories))
    for way in others:
        process = way.begin(source)
        memories = [PeakMemory(one.pid) for one in (process, way.server)]
        process.wait(LIMIT)
        way.clear()
        print(f"{way.name:28}" + "".join(f"{memory.stop():10.0f} MB" for memory in memories))


def measure(network, runs, mebibytes, files):
    others = OtherWays(network, "anna", "bob")
    ours = Brevanholt(network)
    try:
        folder = ours.stations[0].folder
        for source in (large_file(folder, mebibytes), many_files(folder, files)):
            compare((ours, *others.all), source, runs)
            peaks(ours, others.all, source)
    finally:
        others.close()
        ours.close()


if __name__ == "__main__":
    given = [int(argument) for argument in sys.argv[1:]]
    net = Network("anna", "bob")
    try:
        measure(net, *given, *(5, 1024, 5000)[len(given) :])
    finally:
        net.close()
