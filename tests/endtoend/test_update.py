"""A newer program is installed while this one runs."""

import os
import pathlib
import shutil
import signal
import unittest

import dbus

from cases import HostTest, install
from stage.host import (
    managed_windows,
    output_of,
    visible_window,
    wait_until,
    web_processes_of,
)
from tray import picture

HOME = pathlib.Path(os.environ["HOME"])
PROGRAM = HOME / ".local/bin/brevanholt"
UI = HOME / ".local/share/brevanholt/ui"
KEPT = HOME / ".local/share/Brevanholt"
NAME = "org.brevanholt.Brevanholt"


def update():
    """Installs the program as a package manager does: new files take the names of the old ones."""
    fresh = HOME / "fresh"
    install(fresh)
    shutil.copytree(fresh, HOME / ".local", symlinks=True, dirs_exist_ok=True, copy_function=put)


def put(source, destination):
    shutil.copy2(source, destination + ".new")
    os.replace(destination + ".new", destination)


def running():
    """The number of the process that has the program's name on the bus; None for none."""
    bus = dbus.SessionBus()
    if not bus.name_has_owner(NAME):
        return None
    return bus.get_object("org.freedesktop.DBus", "/").GetConnectionUnixProcessID(NAME)


class UpdateTest(HostTest):
    def test_goes_on_with_its_own_page_and_restarts_when_asked(self):
        update()
        self.run_beside(PROGRAM)
        self.addCleanup(output_of, PROGRAM, "--quit")
        wait_until(visible_window, "the window")
        wait_until(lambda: any(KEPT.glob("*.json")), "the page")
        old = running()
        output_of(PROGRAM)
        self.assertEqual(len(managed_windows()), 1)

        update()
        (UI / "main.js").write_text("throw new Error('this is of another version');")
        shutil.rmtree(KEPT)
        os.kill(web_processes_of(old)[0], signal.SIGKILL)
        wait_until(lambda: any(KEPT.glob("*.json")), "the page, loaded again")

        output_of(PROGRAM)
        wait_until(lambda: len(managed_windows()) == 2, "the notice")
        picture("update")
        output_of("wmctrl", "-i", "-a", hex(managed_windows()[-1]))
        output_of("xdotool", "key", "alt+r")
        # The link to a file that was replaced ends in "(deleted)"; a restart keeps the number.
        wait_until(lambda: os.readlink(f"/proc/{old}/exe") == str(PROGRAM), "the restart")
        wait_until(lambda: running() == old, "the new version")
        wait_until(visible_window, "the window")


if __name__ == "__main__":
    unittest.main(verbosity=2)
