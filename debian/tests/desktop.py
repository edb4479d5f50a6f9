"""The installed program, as the desktop starts it: by links, file managers and at login."""

import os
import pathlib
import shlex
import subprocess
import unittest
import uuid


import dbus
from gi.repository import Gio

from stage.host import hide_window, output_of, shown_windows, visible_window, wait_until
from cases import RemoteTest
from tray import picture

HOME = pathlib.Path(os.environ["HOME"])
NAME = "org.brevanholt.Brevanholt"
KEPT = HOME / ".local/share/Brevanholt"


def runs():
    return dbus.SessionBus().name_has_owner(NAME)


def quit_program():
    output_of("brevanholt", "--quit")
    wait_until(lambda: not runs(), "the program's end")


def wants_to_send(text):
    """Whether the window keeps something of that name or text to send."""
    return any(text in file.read_text() for file in KEPT.glob("outbox*"))


class DesktopTest(RemoteTest):
    def setUp(self):
        self.addCleanup(quit_program)

    def test_link_starts_the_program(self):
        identifier = str(uuid.uuid4())
        share = HOME / "Downloads/.NativeShareInbox" / identifier
        share.mkdir(parents=True)
        (share / "share.json").write_text('{"items": [{"text": "from a link"}]}')
        # Without a pipe, which the program would hold open.
        link = f"brevanholt://share?id={identifier}"
        subprocess.run(["xdg-open", link], check=True, timeout=30, stdin=subprocess.DEVNULL)
        wait_until(visible_window, "the window")
        wait_until(lambda: wants_to_send("from a link"), "the text")
        picture("link")

    def send_from_menu(self, file_manager, *keys):
        """Opens a folder with one file in it, and uses the menu of that file."""
        folder = HOME / file_manager
        folder.mkdir()
        (folder / f"{file_manager}.txt").write_text("hello")
        self.run_beside(file_manager, str(folder))
        wait_until(lambda: shown_windows("class", file_manager), "the file manager")
        picture(f"{file_manager}-window")
        output_of("xdotool", "key", "ctrl+a")
        output_of("xdotool", "key", "Menu")
        output_of("xdotool", "key", *keys)
        picture(f"{file_manager}-menu")
        output_of("xdotool", "key", "Return")
        wait_until(visible_window, "the window")
        wait_until(lambda: wants_to_send(f"{file_manager}.txt"), "the file")
        picture(file_manager)

    def test_thunar_sends_what_is_selected(self):
        # From below: above are other programs, and others on each machine.
        self.send_from_menu("thunar", *["Up"] * 6, "Right", "Down")

    def test_nemo_sends_what_is_selected(self):
        self.send_from_menu("nemo", *["Up"] * 9)

    def test_starts_at_login_in_the_background(self):
        _, remote = self.start_remote()
        self.assertEqual(remote.call("setLaunchAtStartup", enabled=True), {"value": None})
        entry = HOME / ".config/autostart" / f"{NAME}.desktop"
        wait_until(entry.exists, "the entry")
        quit_program()
        output_of("desktop-file-validate", entry)
        Gio.DesktopAppInfo.new_from_filename(str(entry)).launch([], None)
        wait_until(runs, "the program")
        self.assertIsNone(visible_window())
        output_of("brevanholt")
        wait_until(visible_window, "the window")
        hide_window()
        print("The entry:", shlex.quote(entry.read_text()))


if __name__ == "__main__":
    unittest.main(verbosity=2)
