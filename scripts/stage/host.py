"""Runs the program with a user interface of the caller's own, inside the virtual desktop it is run in."""

import json
import os
import pathlib
import shutil
import signal
import subprocess
import tempfile
import time

HERE = pathlib.Path(__file__).resolve().parent
SOURCE = HERE.parents[1]
BINARY = os.environ.get("BREVANHOLT_BINARY", str(SOURCE / "build/release/bin/brevanholt"))
TIME_LIMIT = 60


def holds_within(limit, condition):
    """The value of a condition once it holds, or at the end of the limit (in seconds)."""
    deadline = time.monotonic() + limit
    while True:
        result = condition()
        if result or time.monotonic() > deadline:
            return result
        time.sleep(0.05)


def wait_until(condition, what, limit=TIME_LIMIT):
    """Waits for a condition to hold and returns what it gave."""
    result = holds_within(limit, condition)
    if not result:
        raise AssertionError(f"{what} did not happen within {limit} seconds")
    return result


def output_of(*command):
    return subprocess.run(command, check=True, capture_output=True, text=True, timeout=30).stdout


def shown_windows(kind, pattern):
    """The X windows that show whose "class" or "name" matches."""
    found = subprocess.run(
        ["xdotool", "search", "--onlyvisible", f"--{kind}", pattern],
        capture_output=True,
        text=True,
        check=False,
        timeout=30,
    )
    return [int(number) for number in found.stdout.split()]


def visible_windows():
    """The program's X windows that show, menus too."""
    return shown_windows("class", "brevanholt")


def managed_windows():
    """The program's X windows that the window manager has framed, the oldest first."""
    listed = subprocess.run(
        ["wmctrl", "-lx"], capture_output=True, text=True, check=False, timeout=30
    )
    rows = [line.split() for line in listed.stdout.splitlines()]
    return [int(row[0], 16) for row in rows if row[2] == "brevanholt.Brevanholt"]


def visible_window():
    """The X window of the main window, or None while it is hidden."""
    return next(map(str, managed_windows()), None)


def hide_window():
    """Closes the main window, which hides it."""
    output_of("wmctrl", "-i", "-c", wait_until(visible_window, "the window"))
    wait_until(lambda: not visible_window(), "hiding")


def web_processes_of(program):
    """The processes of a program's page, which may lie in a sandbox below it."""
    rows = [row.split() for row in output_of("ps", "-eo", "pid=,ppid=,comm=").splitlines()]
    below = {program}
    while more := {int(row[0]) for row in rows if int(row[1]) in below} - below:
        below |= more
    return [int(row[0]) for row in rows if int(row[0]) in below and row[2] == "WebKitWebProces"]


class Host:
    """One run of the program. Its standard error is kept in `log`."""

    def __init__(
        self,
        *options,
        scenario=None,
        arguments=(),
        environment=None,
        more_bundle=None,
        directory=None,
        prefix=(),
        needs=None,
    ):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="brevanholt-e2e-"))
        self.log_path = self.folder / "log"
        self.report_path = self.folder / "report.json"
        command = [*prefix, BINARY, *options]
        if scenario:
            bundle = self.folder / "bundle"
            shutil.copytree(HERE / "bundle", bundle)
            shutil.copytree(SOURCE / "ui/engine", bundle / "engine")
            if more_bundle:
                shutil.copytree(more_bundle, bundle, dirs_exist_ok=True)
            given = [f"scenario={scenario}", f"report={self.report_path}", *arguments]
            values = [text.partition("=")[2] for text in given]
            folders = [str(self.folder), *(value for value in values if value.startswith("/"))]
            usual = {"folders": folders, "networks": ["127.0.0.0/8"]}
            (bundle / "bundle.json").write_text(json.dumps(usual if needs is None else needs))
            command += ["--ui-bundle", str(bundle)]
            command += [part for text in given for part in ("--ui-argument", text)]
        with open(self.log_path, "wb") as log:
            self.process = subprocess.Popen(
                command, stderr=log, cwd=directory, env={**os.environ, **(environment or {})}
            )

    @property
    def log(self):
        return self.log_path.read_text(errors="replace")

    def report(self):
        """What the scenario returned."""
        report = wait_until(self._parsed_report, "the report")
        if "error" in report:
            raise AssertionError(report["error"] + "\n" + report.get("stack", ""))
        return report.get("value")

    def _parsed_report(self):
        try:
            return json.loads(self.report_path.read_text())
        except (OSError, ValueError):
            if self.process.poll() is not None:
                raise AssertionError(f"the program ended early: {self.log}") from None
            return None

    def web_processes(self):
        """The page's processes of this run."""
        return web_processes_of(self.process.pid)

    def stop(self, with_signal=signal.SIGTERM):
        """Ends the program and returns its exit status."""
        if self.process.poll() is None:
            self.process.send_signal(with_signal)
        status = self.process.wait(TIME_LIMIT)
        shutil.rmtree(self.folder, ignore_errors=True)
        return status


class Orders:
    """Orders to a scenario that follows them, as bundle/orders.js says."""

    def __init__(self):
        self.folder = pathlib.Path(tempfile.mkdtemp())
        self.given = 0

    def give(self, order):
        """Gives one order and returns what came of it."""
        with open(self.folder / "orders", "a", encoding="utf-8") as orders:
            orders.write(json.dumps(order) + "\n")
        done = self.folder / f"done-{self.given}"
        self.given += 1
        wait_until(lambda: done.exists() and done.read_text(), f"the page to follow {order}")
        return json.loads(done.read_text())
