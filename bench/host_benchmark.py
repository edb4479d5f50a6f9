"""Start-up, calls and memory of the whole program, in the virtual desktop it is run in:

    scripts/virtual-desktop /usr/bin/python3 bench/host_benchmark.py
"""

import pathlib
import shutil
import subprocess
import tempfile
import time

import gi

gi.require_version("Gio", "2.0")
from gi.repository import Gio  # noqa: E402  (after the version)

SOURCE = pathlib.Path(__file__).resolve().parents[1]
from medians import print_medians
from stage import host
from usage import below, memory_of, wake_ups

RUNS = 5
# Runs a command on a network with nobody else.
ALONE = (
    "unshare",
    "--net",
    "sh",
    "-c",
    "ip link set lo up && ip link add eth0 type veth peer name other && ip link set other up"
    ' && ip address add 10.77.0.1/24 dev eth0 && ip link set eth0 up && exec "$@"',
    "sh",
)
FOLDERS, FILES_IN_EACH = 1000, 100


def memory_of_named(pattern):
    """The proportional share of memory, in MB, of the processes whose command begins so."""
    found = subprocess.run(["pgrep", "-f", pattern], capture_output=True, text=True, check=False)
    return sum(memory_of(int(process)) for process in found.stdout.split()) / 1000


def run_once():
    folder = tempfile.mkdtemp(dir="/dev/shm")
    started = time.time()
    program = host.Host(
        scenario="timings", arguments=[f"folder={folder}"], more_bundle=SOURCE / "bench/bundle"
    )
    try:
        timings = program.report()
        return {
            "start to first answer, ms": timings["firstAnswer"] - started * 1000,
            "one call, ms": timings["oneCall"],
            "one call of 5,000 in flight, ms": timings["inFlight"],
            "1 MiB to the host, ms": timings["writeMebibyte"],
            "1 MiB from the host, ms": timings["readMebibyte"],
            "16 MiB sealed, there and back, ms": timings["seal16Mebibytes"],
            "host, MB": memory_of_named(f"^{host.BINARY}"),
            "page, MB": memory_of_named("WebKitWebProcess"),
            "network process, MB": memory_of_named("WebKitNetworkProcess"),
        }
    finally:
        program.stop()
        shutil.rmtree(folder)


def fill(folder):
    for number in range(FOLDERS):
        inside = folder / f"folder {number}"
        inside.mkdir(parents=True)
        for file in range(FILES_IN_EACH):
            (inside / f"file {file}").touch()


def longest_pause(program):
    """The longest that the host's main loop takes to answer, in ms, until the page has reported."""
    bus = Gio.bus_get_sync(Gio.BusType.SESSION)
    longest = 0
    while not program.report_path.exists():
        started = time.monotonic()
        bus.call_sync(
            "org.brevanholt.Brevanholt",
            "/org/brevanholt/Brevanholt",
            "org.gtk.Actions",
            "List",
            None,
            None,
            Gio.DBusCallFlags.NONE,
            10000,
            None,
        )
        longest = max(longest, time.monotonic() - started)
    return longest * 1000


def share_once():
    folder = pathlib.Path(tempfile.mkdtemp(dir="/dev/shm"))
    fill(folder / "large")
    program = host.Host(
        scenario="sharing", arguments=[f"folder={folder}"], more_bundle=SOURCE / "bench/bundle"
    )
    try:
        host.wait_until((folder / "ready").exists, "the page")
        with subprocess.Popen([host.BINARY, "--share", folder / "large"]):
            pause = longest_pause(program)
        return {
            "100,000 files shared, the host's pause, ms": pause,
            "100,000 files shared, the page's wait, ms": program.report(),
        }
    finally:
        program.stop()
        shutil.rmtree(folder)


def idle_once():
    """The user interface that ships, alone on its network. All threads of all processes count. Twice
    in the background, since WebKit asks a hidden page's process after 20 seconds, and then after a
    pause twice as long each time, whether it still answers."""
    program = host.Host(prefix=ALONE)
    try:
        host.wait_until(host.visible_window, "the window")
        for where, pause in (("in the window", 15), ("just hidden", 15), ("hidden", 25)):
            if where == "just hidden":
                host.hide_window()
            time.sleep(pause)  # what was going on ends
            counted = wake_ups(program.process.pid, 30)
            yield f"wake-ups in 30 idle s, {where}", counted.total()
            for names, count in counted.most_common():
                yield "    " + "/".join(names), count
            yield from memory_rows(program.process.pid, where)
    finally:
        program.stop()


def memory_rows(process, where):
    for kind, part in (("memory", "Pss"), ("without files and libraries", "Pss_Anon")):
        held = sum(memory_of(one, part) for one in below(process))
        yield f"{kind}, {where}, MB", round(held / 1000)


def bare_once():
    """A program that shows an empty page with the same engine."""
    with subprocess.Popen([*ALONE, pathlib.Path(host.BINARY).with_name("bare_webview")]) as program:
        time.sleep(15)
        yield from memory_rows(program.pid, "a bare program with an empty page")
        program.terminate()


def main():
    for name, value in (*idle_once(), *bare_once()):
        print(f"{name:43} {value:10}")
    runs = [{**run_once(), **share_once()} for _ in range(RUNS)]
    print_medians(runs, 3)


if __name__ == "__main__":
    main()
