"""A machine in a test network: a desktop, the program on it, and ways to use its window."""

import json
import os
import pathlib
import shutil
import signal
import subprocess
import tempfile

from stage.host import BINARY, HERE, SOURCE, Orders, wait_until

VIRTUAL_DESKTOP = str(SOURCE / "scripts/virtual-desktop")
SCREENSHOT = str(SOURCE / "scripts/settled-screenshot")


def bundle_with_hand(folder):
    """The shipped user interface with hand.js beside it."""
    shutil.copytree(SOURCE / "ui", folder)
    for part in ("hand.js", "bundle/orders.js", "bundle/accessible_names.js"):
        shutil.copy(HERE / part, folder)
    page = folder / "index.html"
    page.write_text(
        page.read_text().replace("</head>", '<script type="module" src="hand.js"></script></head>')
    )
    return folder


def bundle_of_views(folder, *pages):
    """The shipped views with a made-up application (page/) and the files of `pages` beside them, for a
    host to run as more of its bundle."""
    left_out = shutil.ignore_patterns("index.html", "main.js", "engine")
    for part in (SOURCE / "ui", HERE / "page", *pages):
        shutil.copytree(part, folder, dirs_exist_ok=True, ignore=left_out)
    return folder


def follow_orders(bundle, orders):
    """Lets the bundle use the orders' folder, and returns the options that run it."""
    manifest = json.loads((SOURCE / "ui/bundle.json").read_text())
    manifest["folders"] = [str(orders.folder)]
    (bundle / "bundle.json").write_text(json.dumps(manifest))
    return ["--ui-bundle", str(bundle), "--ui-argument", f"hand={orders.folder}"]


class Station:
    """The commands of `wrapper` run the program. Without a panel the window has the whole screen."""

    def __init__(self, network, name, wrapper=(), panel=False, size="560x860"):
        self.network = network
        self.name = name
        self._wrapper = wrapper
        self._panel = panel
        self._size = size
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix=f"brevanholt-{name}-"))
        self.home = self.folder / "home"
        self.received = self.home / "Downloads/Brevanholt"
        self.received.parent.mkdir(parents=True)
        self._log = self.folder / "log"
        self._bundle = bundle_with_hand(self.folder / "bundle")
        self._desktop = None

    def start(self):
        self._orders = Orders()
        inside = self.folder / "inside"
        inside.unlink(missing_ok=True)
        program = [*self._wrapper, BINARY, *follow_orders(self._bundle, self._orders)]
        script = '{ echo $$; env; } >"$0.new"; mv "$0.new" "$0"; exec "$@" 2>>"${0%/*}/log"'
        self._desktop = subprocess.Popen(
            self.network.command(
                self.name,
                VIRTUAL_DESKTOP,
                *(() if self._panel else ("--without-panel",)),
                "--size",
                self._size,
                "--home",
                str(self.home),
                "sh",
                "-c",
                script,
                str(inside),
                *program,
            ),
            stderr=subprocess.DEVNULL,
        )
        process, *variables = wait_until(
            lambda: inside.exists() and inside.read_text(), f"{self.name}'s desktop"
        ).splitlines()
        self.process = int(process)
        self._environment = dict(line.split("=", 1) for line in variables if "=" in line)
        self.sees("Nearby")
        if not self._panel:
            self.run(
                "xdotool",
                "search",
                "--sync",
                "--onlyvisible",
                "--name",
                "^Brevanholt$",
                "windowsize",
                "100%",
                "100%",
            )

    def stop(self, with_signal=signal.SIGTERM):
        """Ends the program, and its desktop with it."""
        if self._desktop is None:
            return
        if self._desktop.poll() is None:
            os.kill(self.process, with_signal)
        self._desktop.wait(60)
        self._desktop = None

    def close(self):
        self.stop(signal.SIGKILL)
        shutil.rmtree(self.folder, ignore_errors=True)

    def run(self, *command):
        """Runs a command at this machine's desktop."""
        return subprocess.run(
            self.network.command(self.name, *command),
            env=self._environment,
            check=True,
            capture_output=True,
            text=True,
            timeout=60,
        ).stdout

    def share(self, *files):
        self.run(BINARY, "--share", *map(str, files))

    def share_text(self, text):
        self.run(BINARY, "--share-text", text)

    def screenshot(self, picture, is_settled=True):
        picture.parent.mkdir(parents=True, exist_ok=True)
        self.run(*((SCREENSHOT,) if is_settled else ("import", "-window", "root")), str(picture))

    def press(self, name):
        """Presses the first control whose name begins so, once it is there; returns when it was."""
        return (
            wait_until(
                lambda: self._orders.give({"press": name}).get("at"),
                f"“{name}” in {self.name}'s window",
                30,
            )
            / 1000
        )

    def longest_pause(self):
        """How long its page has answered nothing at most since this was asked before, in ms."""
        return self._orders.give({"pause": True})["pause"]

    def text(self):
        """All that the window says."""
        return self._orders.give({})["text"]

    def sees(self, text, limit=60):
        try:
            wait_until(lambda: text in self.text(), f"“{text}” in {self.name}'s window", limit)
        except AssertionError as failure:
            raise AssertionError(
                f"{failure}; it says:\n{self.text()}\nlog:\n" f"{self._log.read_text()[-2000:]}"
            ) from None


def acquaint(sender, receiver):
    """Makes two stations that run know each other, by a text that is sent."""
    sender.share_text("hello")
    sender.press(f"Send to {receiver.name}")
    for station in (sender, receiver):
        station.press("They match")
    receiver.press("Accept")
    sender.sees(f"Sent to {receiver.name}")
    for station in (sender, receiver):
        station.press("Clear recent transfers")
