"""The program on desktops that lack what it likes to have."""

import os
import pathlib
import shutil
import subprocess
import tempfile
import time
import unittest

from host import BINARY, HostTest, output_of, visible_window, wait_until
from tray import Tray, colours_in, picture, pixels_like

NOWHERE = "unix:path=/nonexistent"
SERVICES = pathlib.Path("/usr/share/dbus-1/services")
BUS = """<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig><type>session</type><listen>unix:path={folder}/bus</listen>
<policy context="default"><allow send_destination="*" eavesdrop="true"/>
<allow eavesdrop="true"/><allow own="*"/></policy>
<servicedir>{folder}/services</servicedir></busconfig>"""
NO_SESSION_BUS = "there is no session bus"
NO_SYSTEM_BUS = "there is no system bus"
NO_LOGIND = "there is no logind"
NO_INHIBITOR = "the system may sleep during a transfer"
NO_NOTIFICATIONS = "there is no notification service"
ALL_WARNINGS = (NO_SESSION_BUS, NO_SYSTEM_BUS, NO_LOGIND, NO_INHIBITOR, NO_NOTIFICATIONS)
GREEN = (38, 163, 105)
IDLE_SECONDS = 10


def wake_ups(process):
    """How often the main thread of a process has waited for something and gone on."""
    status = pathlib.Path(f"/proc/{process}/task/{process}/status").read_text()
    return int(next(line.split()[1] for line in status.splitlines()
                    if line.startswith("voluntary_ctxt_switches")))


class BareTest(HostTest):

    def start_bus(self, without=()):
        """A bus that can start the session's services but for those that are named."""
        folder = pathlib.Path(tempfile.mkdtemp(prefix="brevanholt-bus-"))
        self.addCleanup(shutil.rmtree, folder, ignore_errors=True)
        (folder / "services").mkdir()
        for service in SERVICES.glob("*.service"):
            if not any(f"Name={name}" in service.read_text().split() for name in without):
                (folder / "services" / service.name).symlink_to(service)
        (folder / "config").write_text(BUS.format(folder=folder))
        bus = subprocess.Popen(["dbus-daemon", f"--config-file={folder}/config", "--nofork",
                                "--nopidfile"], stderr=subprocess.DEVNULL)
        self.addCleanup(bus.wait)
        self.addCleanup(bus.terminate)
        wait_until((folder / "bus").exists, "the bus")
        return f"unix:path={folder}/bus"

    def start_logind(self, system_bus):
        environment = {**os.environ, "DBUS_SYSTEM_BUS_ADDRESS": system_bus}
        logind = subprocess.Popen(["/usr/bin/python3", "-m", "dbusmock", "--template", "logind"],
                                  env=environment, stdout=subprocess.DEVNULL)
        self.addCleanup(logind.wait)
        self.addCleanup(logind.terminate)
        wait_until(lambda: "true" in output_of(
            "gdbus", "call", "--address", system_bus, "--dest", "org.freedesktop.DBus",
            "--object-path", "/", "--method", "org.freedesktop.DBus.NameHasOwner",
            "org.freedesktop.login1"), "logind")

    def test_serves_without_each_service_alone_and_without_all_of_them(self):
        session = self.start_bus()
        deaf = self.start_bus(without=["org.freedesktop.Notifications"])
        pictureless = self.start_bus(without=["org.freedesktop.thumbnails.Thumbnailer1"])
        sleepless = self.start_bus()
        system = self.start_bus()
        self.start_logind(system)
        shown = {"value": None}
        for session_bus, system_bus, warnings in (
                (session, system, []),
                (NOWHERE, system, [NO_SESSION_BUS, NO_NOTIFICATIONS]),
                (session, NOWHERE, [NO_SYSTEM_BUS, NO_LOGIND, NO_INHIBITOR]),
                (deaf, system, [NO_NOTIFICATIONS]),
                (session, sleepless, [NO_LOGIND, NO_INHIBITOR]),
                (pictureless, system, []),
                (NOWHERE, NOWHERE, ALL_WARNINGS)):
            with self.subTest(session=session_bus, system=system_bus, warnings=warnings):
                host = self.start(scenario="services",
                                  environment={"DBUS_SESSION_BUS_ADDRESS": session_bus,
                                               "DBUS_SYSTEM_BUS_ADDRESS": system_bus})
                results = host.report()
                self.assertEqual(results["unknown"], {"missing": True})
                self.assertEqual(results["deviceName"], {"value": os.uname().nodename})
                if NO_NOTIFICATIONS in warnings:
                    self.assertEqual(results["permission"]["error"][0],
                                     "notification_permission_error")
                    for result in (results["shown"], results["shownAgain"]):
                        self.assertEqual(result["error"][0], "notification_error")
                        self.assertIn("Could not show the notification: ", result["error"][1])
                else:
                    self.assertEqual(results["permission"], {"value": True})
                    self.assertEqual([results["shown"], results["shownAgain"]], [shown, shown])
                for name in ("cleared", "transfer", "rest", "transferAgain"):
                    self.assertEqual(results[name], {"value": None})
                self.assertTrue(visible_window())
                wait_until(lambda: all(text in host.log for text in warnings), "the warnings")
                self.assertEqual({text: host.log.count(text) for text in ALL_WARNINGS},
                                 {text: int(text in warnings) for text in ALL_WARNINGS})
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
