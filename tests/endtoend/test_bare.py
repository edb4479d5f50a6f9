"""The program on desktops that lack what it likes to have."""

import pathlib
import subprocess
import time
import unittest

from host import BINARY, HostTest, output_of, visible_window, wait_until
from tray import Tray, colours_in, picture, pixels_like

NOWHERE = "unix:path=/nonexistent"
GREEN = (38, 163, 105)
IDLE_SECONDS = 10


def wake_ups(process):
    """How often the main thread of a process has waited for something and gone on."""
    status = pathlib.Path(f"/proc/{process}/task/{process}/status").read_text()
    return int(next(line.split()[1] for line in status.splitlines()
                    if line.startswith("voluntary_ctxt_switches")))


class BareTest(HostTest):

    def test_runs_without_tray_or_buses_each_alone_and_all_together(self):
        missing = {"DBUS_SESSION_BUS_ADDRESS": "there is no session bus",
                   "DBUS_SYSTEM_BUS_ADDRESS": "there is no system bus"}
        for names in (["DBUS_SESSION_BUS_ADDRESS"], ["DBUS_SYSTEM_BUS_ADDRESS"], list(missing)):
            with self.subTest(missing=names):
                host = self.start(scenario="hello",
                                  environment={name: NOWHERE for name in names})
                self.assertEqual(host.report()["unknown"], {"missing": True})
                self.assertTrue(visible_window())
                for name in names:
                    self.assertEqual(host.log.count(missing[name]), 1)
                self.assertEqual(host.log.count("there is no status tray"), 1)
                self.assertEqual(host.stop(), 0)

    def test_comes_back_without_a_tray_when_launched_again(self):
        host = self.start(scenario="hello")
        host.report()
        output_of("wmctrl", "-i", "-c", visible_window())
        wait_until(lambda: not visible_window(), "hiding")
        subprocess.run([BINARY], timeout=30, check=True)
        wait_until(visible_window, "the window")

    def test_uses_a_tray_of_the_older_kind(self):
        trayer = subprocess.Popen(["trayer", "--edge", "top", "--align", "right", "--widthtype",
                                   "pixel", "--width", "200", "--tint", "0xffffff"])
        self.addCleanup(trayer.wait)
        self.addCleanup(trayer.kill)
        wait_until(lambda: '"trayer"' in output_of("xwininfo", "-root", "-tree"), "the tray")
        host = self.start(scenario="hello")
        host.report()
        icon = picture("icon-in-older-tray", "24x24+1256+0")
        self.assertTrue(any(sum(colour) < 250 for colour in colours_in(icon)), "the icon is drawn")
        output_of("xdotool", "mousemove", "1268", "12", "click", "1")
        self.assertGreater(pixels_like(GREEN, picture("menu-from-older-tray", "620x420+660+0")), 10)
        self.assertNotIn("there is no status tray", host.log)

    def test_appears_in_a_panel_that_starts_later(self):
        host = self.start(scenario="hello")
        host.report()
        tray = Tray(host.process.pid)
        self.assertFalse(tray.is_registered())
        panel = subprocess.Popen(["xfce4-panel"], stderr=subprocess.DEVNULL)
        self.addCleanup(panel.wait)
        self.addCleanup(output_of, "xfce4-panel", "--quit")
        wait_until(tray.is_registered, "the panel to take the icon")
        picture("icon-in-later-panel", "620x100+660+0")

    def test_does_nothing_when_there_is_nothing_to_do(self):
        host = self.start(scenario="hello")
        host.report()
        for where in ("in the window", "in the background"):
            with self.subTest(where):
                time.sleep(3)  # what was going on ends
                before = wake_ups(host.process.pid)
                time.sleep(IDLE_SECONDS)
                self.assertLessEqual(wake_ups(host.process.pid) - before, 2)
            if visible_window():
                output_of("wmctrl", "-i", "-c", visible_window())


if __name__ == "__main__":
    unittest.main(verbosity=2)
