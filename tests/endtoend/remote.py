"""A page that the test controls: it makes calls and hears events on the test's behalf."""

import itertools
import json
import os
import pathlib
import tempfile

import gi

gi.require_version("GLib", "2.0")
from gi.repository import GLib  # noqa: E402  (after the version)

from host import HostTest, visible_window, wait_until  # noqa: E402


def stored_bookmarks():
    """What the user defaults hold under "pickedFileBookmarks": path to base64."""
    defaults = GLib.KeyFile()
    defaults.load_from_file(f"{os.environ['HOME']}/.config/brevanholt/defaults.ini",
                            GLib.KeyFileFlags.NONE)
    try:
        text = defaults.get_value("Defaults", "pickedFileBookmarks")
    except GLib.Error:
        return {}
    stored = GLib.Variant.parse(GLib.VariantType("a(ayay)"), text)
    return {bytes(path[:-1]).decode(): bytes(bookmark[:-1]).decode()
            for path, bookmark in stored.unpack()}


class Remote:
    """One run of that page; give a host its scenario and `arguments`."""

    def __init__(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="brevanholt-remote-"))
        self.arguments = [f"folder={self.folder}"]
        self._numbers = itertools.count(1)

    def begin(self, method, args=None):
        """Makes a call and returns its number."""
        number = next(self._numbers)
        written = self.folder / "next"
        written.write_text(json.dumps({"method": method, "args": args}))
        written.rename(self.folder / f"call-{number}")
        return number

    def finish(self, number):
        """What the call came to: {"value": …}, {"error": …} or {"missing": true}."""
        reply = self.folder / f"reply-{number}"
        return json.loads(wait_until(
            lambda: reply.exists() and reply.read_text().endswith("\n") and reply.read_text(),
            f"the reply to call {number}"))

    def is_answered(self, number):
        return (self.folder / f"reply-{number}").exists()

    def call(self, method, args=None):
        return self.finish(self.begin(method, args))

    def listens(self):
        return (self.folder / "events").exists()

    def events(self):
        """[method, arguments] of what was handed in, as the host has told of it so far."""
        if not self.listens():
            return []
        text = (self.folder / "events").read_text()
        events = [json.loads(line) for line in text.splitlines(keepends=True)
                  if line.endswith("\n")]
        # These come whenever the window gets the focus or the network changes.
        return [event for event in events if event[0] != "discoveryRecoveryRequested"]

    def wait_for_events(self, count):
        wait_until(lambda: len(self.events()) >= count, f"event {count}")
        return self.events()


class RemoteTest(HostTest):
    """A test that starts hosts with such a page."""

    def start_remote(self, *options):
        """Starts the program and returns it and its page, once the page listens."""
        remote = Remote()
        host = self.start(*options, scenario="remote", arguments=remote.arguments)
        wait_until(visible_window, "the window")
        wait_until(remote.listens, "the page")
        return host, remote
