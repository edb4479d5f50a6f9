"""The program on desktops that lack what it likes to have."""

import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import unittest

from stage.host import BINARY, hide_window, output_of, visible_window, wait_until
from cases import RemoteTest
from tray import GREEN, MENU, darkest, open_menu, picture, pixels_like

NOWHERE = "unix:path=/nonexistent"
SERVICES = pathlib.Path("/usr/share/dbus-1/services")
BUS = """<busconfig><type>session</type><listen>unix:path={folder}/bus</listen>
<policy context="default"><allow send_destination="*"/><allow receive_sender="*"/><allow own="*"/>
</policy><servicedir>{folder}</servicedir></busconfig>"""
NO_SESSION_BUS = "there is no session bus"
NO_SYSTEM_BUS = "there is no system bus"
NO_LOGIND = "there is no logind"
NO_INHIBITOR = "the system may sleep during a transfer"
NO_NOTIFICATIONS = "a notification could not be shown"
NO_TRAY = "there is no status tray"
WARNINGS = (NO_SESSION_BUS, NO_SYSTEM_BUS, NO_LOGIND, NO_INHIBITOR, NO_NOTIFICATIONS, NO_TRAY)


class BareTest(RemoteTest):
    def start_bus(self, without=None):
        """A bus that can start the session's services but for one."""
        folder = pathlib.Path(tempfile.mkdtemp(prefix="brevanholt-bus-"))
        self.addCleanup(shutil.rmtree, folder, ignore_errors=True)
        for service in SERVICES.glob("*.service"):
            if f"Name={without}" not in service.read_text().split():
                (folder / service.name).symlink_to(service)
        (folder / "config").write_text(BUS.format(folder=folder))
        self.run_beside("dbus-daemon", f"--config-file={folder}/config", "--nofork", "--nopidfile")
        wait_until((folder / "bus").exists, "the bus")
        return f"unix:path={folder}/bus"

    def test_serves_without_each_service_alone_and_without_all_of_them(self):
        session, system = self.start_bus(), self.start_bus()
        self.run_beside(
            sys.executable,
            "-m",
            "dbusmock",
            "--template",
            "logind",
            env={**os.environ, "DBUS_SYSTEM_BUS_ADDRESS": system},
            stdout=subprocess.DEVNULL,
        )
        output_of("gdbus", "wait", "--address", system, "org.freedesktop.login1")
        for session_bus, system_bus, *warnings in (
            (session, system),
            (NOWHERE, system, NO_SESSION_BUS, NO_NOTIFICATIONS),
            (session, NOWHERE, NO_SYSTEM_BUS, NO_LOGIND, NO_INHIBITOR),
            (self.start_bus("org.freedesktop.Notifications"), system, NO_NOTIFICATIONS),
            (session, self.start_bus(), NO_LOGIND, NO_INHIBITOR),
            (self.start_bus("org.freedesktop.thumbnails.Thumbnailer1"), system),
            (NOWHERE, NOWHERE, *WARNINGS),
        ):
            with self.subTest(session=session_bus, system=system_bus, warnings=warnings):
                host, remote = self.start_remote(
                    environment={
                        "DBUS_SESSION_BUS_ADDRESS": session_bus,
                        "DBUS_SYSTEM_BUS_ADDRESS": system_bus,
                    }
                )
                self.assertEqual(remote.call("deviceName"), {"value": os.uname().nodename})
                for is_on in (True, False, True):
                    shown = remote.call("showNotification", id="a", title="Title", body="Body")
                    self.assertEqual(
                        shown.get("error", ["none"])[0],
                        "notification_error" if NO_NOTIFICATIONS in warnings else "none",
                    )
                    self.assertNotIn(
                        "error",
                        remote.call("setBackgroundMode", enabled=is_on, transferInProgress=is_on),
                    )
                self.assertNotIn("error", remote.call("clearNotification", id="a"))
                wait_until(lambda: all(text in host.log for text in warnings), "the warnings")
                self.assertEqual(
                    {text: host.log.count(text) for text in WARNINGS},
                    {text: int(text in (*warnings, NO_TRAY)) for text in WARNINGS},
                )
                self.assertEqual(host.stop(), 0)

    def test_uses_a_tray_of_the_older_kind(self):
        self.run_beside(
            "trayer",
            "--edge",
            "top",
            "--align",
            "right",
            "--widthtype",
            "pixel",
            "--width",
            "200",
            "--tint",
            "0xffffff",
        )
        wait_until(lambda: '"trayer"' in output_of("xwininfo", "-root", "-tree"), "the tray")
        host, _ = self.start_remote()
        self.assertLess(darkest(picture("icon-in-older-tray", "24x24+1256+0")), 0.3)
        output_of("xdotool", "mousemove", "1268", "12", "click", "1")
        self.assertGreater(pixels_like(GREEN, picture("menu-from-older-tray", MENU)), 10)
        self.assertNotIn(NO_TRAY, host.log)

    def test_serves_without_a_panel_and_in_one_that_starts_later(self):
        self.start_remote()
        hide_window()
        subprocess.run([BINARY], timeout=30, check=True)
        wait_until(visible_window, "the window")
        self.run_beside("xfce4-panel")
        open_menu()
        picture("menu-in-later-panel", MENU)


if __name__ == "__main__":
    unittest.main(verbosity=2)
