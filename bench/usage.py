"""Processor time and memory of processes and of all their descendants."""

import collections
import os
import pathlib
import re
import resource
import threading
import time

TICKS = os.sysconf("SC_CLK_TCK")


def below(process):
    """A process and its descendants."""
    family = [process]
    for one in family:
        try:
            for children in pathlib.Path(f"/proc/{one}/task").glob("*/children"):
                family += map(int, children.read_text().split())
        except (FileNotFoundError, ProcessLookupError):
            continue  # it, or one of its threads, has ended
    return family


def processor_seconds(process):
    """The processor time of a process and all below it, with that of children that have ended."""
    ticks = 0
    for one in below(process):
        try:
            stat = pathlib.Path(f"/proc/{one}/stat").read_text()
        except (FileNotFoundError, ProcessLookupError):
            continue
        ticks += sum(map(int, stat.rpartition(")")[2].split()[11:15]))
    return ticks / TICKS


def seconds_of_children():
    """The processor time of this program's children that have ended, and of theirs."""
    usage = resource.getrusage(resource.RUSAGE_CHILDREN)
    return usage.ru_utime + usage.ru_stime


def memory_of(process, part="Pss"):
    """Its proportional share of memory (PSS), in kB, or only a part of it: "Pss_Anon" leaves out the
    pages of files. How large the share of a library is depends on the programs that run besides."""
    try:
        rollup = pathlib.Path(f"/proc/{process}/smaps_rollup").read_text()
    except (FileNotFoundError, ProcessLookupError):
        return 0
    return int(re.search(rf"^{part}: *(\d+)", rollup, re.MULTILINE)[1])


def _waits(process):
    """How often each thread of a process, and of all below it, has waited for something so far."""
    counts = {}
    for one in below(process):
        for task in pathlib.Path(f"/proc/{one}/task").glob("*"):
            try:
                text = (task / "status").read_text()
                names = pathlib.Path(f"/proc/{one}/comm").read_text(), (task / "comm").read_text()
            except (FileNotFoundError, ProcessLookupError):
                continue
            waited = re.search(r"^voluntary_ctxt_switches:\s*(\d+)", text, re.MULTILINE)
            counts[(task, *map(str.strip, names))] = int(waited[1])
    return counts


def wake_ups(process, seconds):
    """How often the threads of a process, and of all below it, wait for something in a time: a count
    for each name of a process and a thread. One that ends counts as far as it was last seen."""
    seen = _waits(process)
    total = collections.Counter()
    deadline = time.monotonic() + seconds
    while time.monotonic() < deadline:
        time.sleep(0.5)
        for thread, count in _waits(process).items():
            total[thread[1:]] += count - seen.get(thread, 0)
            seen[thread] = count
    return +total


class PeakMemory:
    """The most memory, in MB, that processes and all below them hold together while this runs."""

    def __init__(self, *processes):
        self.largest = 0
        self._processes = processes
        self._over = threading.Event()
        self._thread = threading.Thread(target=self._watch)
        self._thread.start()

    def stop(self):
        self._over.set()
        self._thread.join()
        return self.largest

    def _watch(self):
        while not self._over.wait(0.3):
            held = {one for process in self._processes for one in below(process)}
            self.largest = max(self.largest, sum(map(memory_of, held)) / 1000)
