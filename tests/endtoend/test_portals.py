"""The program in a sandbox, on the desktop's real portals; what is asked of them is recorded.

Another way to start it in a sandbox, Flatpak itself say, can be given by BREVANHOLT_SANDBOX.
"""

import os
import pathlib
import re
import shlex
import subprocess
import tempfile
import unittest

import dbus

from stage.host import wait_until
from cases import RemoteTest
from test_services import notification_windows
from tray import picture

HERE = pathlib.Path(__file__).parent
HOME = pathlib.Path(os.environ["HOME"])
SANDBOX = shlex.split(os.environ.get("BREVANHOLT_SANDBOX", str(HERE / "in_sandbox.sh")))
PORTAL = "org.freedesktop.portal."
BACKGROUND = "org.freedesktop.impl.portal.Background"
BACKEND = "org.freedesktop.impl.portal.desktop.test"
BACKEND_FILE = f"[portal]\nDBusName={BACKEND}\nInterfaces={BACKGROUND}\nUseIn=XFCE\n"
MEMBER = re.compile(r"interface=(\S+); member=(\w+)")


class Portals:
    """The desktop's portals, with a back end for those that GTK's does not have."""

    def __init__(self, test):
        folder = test.new_folder()
        for file in pathlib.Path("/usr/share/xdg-desktop-portal/portals").glob("gtk.portal"):
            (folder / file.name).write_bytes(file.read_bytes())
        (folder / "test.portal").write_text(BACKEND_FILE)
        environment = {**os.environ, "XDG_DESKTOP_PORTAL_DIR": str(folder)}
        where = "/org/freedesktop/portal/desktop"
        self.backend = test.mock(BACKEND, where, BACKGROUND)
        self.backend.AddMethods(
            BACKGROUND,
            [
                ("GetAppState", "", "a{sv}", "ret = {}"),
                ("EnableAutostart", "sbasu", "b", "ret = True"),
            ],
        )
        self.record = folder / "calls"
        with open(self.record, "wb") as record:
            test.run_beside("dbus-monitor", "--session", "type=method_call", stdout=record)
        wait_until(lambda: self.record.stat().st_size, "the recorder")
        test.run_beside("/usr/libexec/xdg-desktop-portal", env=environment)
        wait_until(lambda: dbus.SessionBus().name_has_owner(PORTAL + "Desktop"), "the portal")

    def calls(self):
        """Interface and method of what was called so far."""
        return [
            f"{where}.{what}" for where, what in MEMBER.findall(self.record.read_text("latin1"))
        ]

    def wait_for(self, call):
        wait_until(lambda: call in self.calls(), call)


def sandbox_works():
    return (
        subprocess.run([*SANDBOX, "true"], check=False, capture_output=True, timeout=30).returncode
        == 0
    )


@unittest.skipUnless(sandbox_works(), "needs bubblewrap to work here")
class PortalsTest(RemoteTest):
    def setUp(self):
        os.environ["TMPDIR"] = str(HOME / "Downloads")  # which the sandbox sees as well
        tempfile.tempdir = None
        self.portals = Portals(self)
        _, self.remote = self.start_remote(prefix=SANDBOX)

    def received(self, name, content):
        path = self.remote.call("temporaryReceivePath", name=name)["value"]
        pathlib.Path(path).write_bytes(content)
        return self.remote.call("publishReceivedFile", path=path, name=name)["value"]

    def test_asks_the_portals_for_what_the_sandbox_keeps_out(self):
        remote, portals = self.remote, self.portals
        watch = f"interface='{PORTAL}NetworkMonitor'"
        wait_until(lambda: watch in portals.record.read_text("latin1"), "a watch on the network")

        with self.subTest("start at login"):
            self.assertEqual(remote.call("launchAtStartupEnabled"), {"value": False})
            remote.call("setLaunchAtStartup", enabled=True)
            wait_until(
                lambda: remote.call("launchAtStartupEnabled") == {"value": True}, "the permission"
            )
            portals.wait_for(BACKGROUND + ".EnableAutostart")
            calls = portals.backend.GetCalls()
            (call,) = [call for call in calls if call[1] == "EnableAutostart"]
            self.assertIn("--login-item", call[2][2])

        with self.subTest("notifications"):
            self.assertEqual(remote.call("requestNotificationPermission"), {"value": True})
            for title in ("Receiving", "Received"):
                shown = remote.call("showNotification", id="a", title=title, body="sea.jpg")
                self.assertEqual(shown, {"value": None})
            portals.wait_for(PORTAL + "Notification.AddNotification")
            wait_until(notification_windows, "the notification")
            picture("portal-notification", "480x200+800+0")
            remote.call("clearNotification", id="a")
            wait_until(lambda: not notification_windows(), "its end")

        with self.subTest("sleep"):
            remote.call("setBackgroundMode", enabled=True, transferInProgress=True)
            portals.wait_for(PORTAL + "Inhibit.Inhibit")
            remote.call("setBackgroundMode", enabled=True, transferInProgress=False)
            portals.wait_for(PORTAL + "Request.Close")

        with self.subTest("reveal, open"):
            location = self.received("sea.txt", b"hello")
            remote.call("revealReceivedFile", location=location)
            portals.wait_for(PORTAL + "OpenURI.OpenDirectory")
            remote.begin("openReceivedFile", location=location)
            portals.wait_for(PORTAL + "OpenURI.OpenFile")
            remote.begin("openExternalUrl", url="https://example.org/")
            portals.wait_for(PORTAL + "OpenURI.OpenURI")

        with self.subTest("file chooser"):
            remote.begin("pickFiles")
            portals.wait_for(PORTAL + "FileChooser.OpenFile")


if __name__ == "__main__":
    unittest.main(verbosity=2)
