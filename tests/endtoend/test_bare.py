"""The program on desktops where a bus, a service or the tray is missing."""

import os
import subprocess
import unittest

from stage.host import BINARY, hide_window, output_of, visible_window, wait_until
from cases import RemoteTest
from tray import GREEN, MENU, darkest, mouse, open_menu, picture, pixels_like

NOWHERE = "unix:path=/nonexistent"
NO_SESSION_BUS = "there is no session bus"
NO_SYSTEM_BUS = "there is no system bus"
NO_LOGIND = "there is no logind"
NO_INHIBITOR = "the system may sleep during a transfer"
NO_NOTIFICATIONS = "a notification could not be shown"
NO_TRAY = "there is no status tray"
WARNINGS = (NO_SESSION_BUS, NO_SYSTEM_BUS, NO_LOGIND, NO_INHIBITOR, NO_NOTIFICATIONS, NO_TRAY)


class BareTest(RemoteTest):
    def test_serves_without_each_service_alone_and_without_all_of_them(self):
        session, system = self.start_bus(), self.start_bus()
        self.mock("org.freedesktop.login1", template="logind", system=True, address=system)
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
        place = "--edge top --align right --widthtype pixel --width 200 --tint 0xffffff"
        self.run_beside("trayer", *place.split())
        wait_until(lambda: '"trayer"' in output_of("xwininfo", "-root", "-tree"), "the tray")
        host, _ = self.start_remote()
        self.assertLess(darkest(picture("icon-in-older-tray", "24x24+1256+0")), 0.3)
        mouse("mousemove", 1268, 12, "click", 1)
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
