"""A message there and back between the host and the UI's code, in the web engine and in Flutter's:

    scripts/virtual-desktop /usr/bin/python3 bench/engines_benchmark.py
"""

import os
import pathlib
import re
import statistics
import subprocess
import tempfile

from stage import host
from stage.dart_side import DartSide

SOURCE = pathlib.Path(__file__).resolve().parents[1]

RUNS = 3
MESSAGES = 10_000
LARGE = 64 << 20


def web_call():
    """In milliseconds."""
    with tempfile.TemporaryDirectory(dir="/dev/shm") as folder:
        program = host.Host(
            scenario="timings", arguments=[f"folder={folder}"], more_bundle=SOURCE / "bench/bundle"
        )
        try:
            return program.report()["oneCall"]
        finally:
            program.stop()


def flutter_messages(bundle):
    """A small message and a large one, in milliseconds."""
    dart = DartSide()
    with tempfile.TemporaryFile("w+") as log:
        exchange = subprocess.Popen(
            [pathlib.Path(host.BINARY).with_name("flutter_exchange"), bundle, dart.address]
            + [os.devnull],
            stdin=subprocess.PIPE,
            stderr=log,
            text=True,
        )

        def time_of(order, count, pattern):
            def written():
                return re.search(pattern, os.pread(log.fileno(), 1 << 24, 0).decode())

            print(order, count, file=exchange.stdin, flush=True)
            return float(host.wait_until(written, order, 300)[1])

        try:
            dart.wait()
            small = time_of("echoes", MESSAGES, r"echoed \d+ (\S+) ms")
            return small, time_of("payload", LARGE, r"carried \d+ (\S+) ms")
        finally:
            exchange.communicate("end\n")
            dart.close()


def main():
    bundle = host.output_of(SOURCE / "scripts/flutter-bundle").strip()
    web, small, large = [], [], []
    for _ in range(RUNS):
        web.append(web_call())
        times = flutter_messages(bundle)
        small.append(times[0])
        large.append(times[1])
    print(f"web, a call of the page: {statistics.median(web):.3f} ms")
    print(f"Flutter, a message to Dart: {statistics.median(small):.3f} ms")
    ratios = [dart / page for dart, page in zip(small, web)]
    print(f"Flutter's, of the web engine's in the same turn: {statistics.median(ratios):.2f}")
    print(f"Flutter, {LARGE >> 20} MiB to Dart and an answer: {statistics.median(large):.0f} ms")


if __name__ == "__main__":
    main()
