"""What the desktop does for the host: notifications, login, sleep, network changes, its name."""

import signal
import subprocess
import unittest

import dbus
import dbusmock

from stage.host import BINARY, hide_window, output_of, shown_windows, visible_window, wait_until
from cases import RemoteTest
from tray import mouse, picture

LOGIND = "org.freedesktop.login1"
HOSTNAMED = "org.freedesktop.hostname1"
SCREEN_SAVERS = [f"org.{name}.ScreenSaver" for name in ("freedesktop", "gnome", "cinnamon", "mate")]
SESSION = "/org/freedesktop/login1/session/c1"
TRANSFER = ("sleep", "Brevanholt", "Brevanholt file transfer", "block")


class ServicesTest(RemoteTest, dbusmock.DBusTestCase):
    @classmethod
    def setUpClass(cls):
        cls.start_system_bus()

    def assert_asks_for_discovery(self, remote, cause):
        before = remote.requests()
        cause()
        wait_until(lambda: remote.requests() > before, "the request")
        return remote.requests() - before

    def test_is_called_what_the_computer_is_called(self):
        hostnamed = self.mock(HOSTNAMED, system=True)
        hostnamed.AddProperties(HOSTNAMED, {"PrettyHostname": "Ada’s computer 🎈"})
        _, remote = self.start_remote()
        wait_until(lambda: remote.call("deviceName") == {"value": "Ada’s computer 🎈"}, "the name")
        hostnamed.UpdateProperties(HOSTNAMED, {"PrettyHostname": "Bob’s"})
        wait_until(lambda: remote.call("deviceName") == {"value": "Bob’s"}, "the new name")

    def test_keeps_the_system_awake_during_a_transfer(self):
        logind = self.mock(LOGIND, template="logind", system=True)

        def inhibitors():
            listed = logind.ListInhibitors(dbus_interface=f"{LOGIND}.Manager")
            return [tuple(each[:4]) for each in listed]

        host, remote = self.start_remote()
        for enabled, expected in ((True, [TRANSFER]), (False, []), (True, [TRANSFER])):
            remote.call("setBackgroundMode", enabled=enabled, transferInProgress=enabled)
            wait_until(lambda: inhibitors() == expected, str(expected))
        for enabled in (False, True, False, True):  # also before logind has answered
            remote.begin("setBackgroundMode", enabled=enabled, transferInProgress=enabled)
        remote.call("deviceName")
        wait_until(lambda: inhibitors() == [TRANSFER], "one inhibitor")
        host.process.send_signal(signal.SIGKILL)
        wait_until(lambda: not inhibitors(), "the inhibitor's end with the program")

    def test_asks_for_discovery_after_waking_and_when_its_window_becomes_key(self):
        logind = self.mock(LOGIND, template="logind", system=True)
        logind.AddSession("c1", "seat0", 1000, "somebody", True)
        session_of = ("GetSessionByPID", "u", "o", f"ret = dbus.ObjectPath('{SESSION}')")
        logind.AddMethod(f"{LOGIND}.Manager", *session_of)
        session = self.get_dbus(True).get_object(LOGIND, SESSION)
        _, remote = self.start_remote()

        def unlock():
            for is_locked in (True, False):
                change = {"LockedHint": dbus.Boolean(is_locked)}
                session.UpdateProperties(f"{LOGIND}.Session", change)

        self.assertEqual(1, self.assert_asks_for_discovery(remote, unlock))
        notices = [(logind, (f"{LOGIND}.Manager", "PrepareForSleep"))] + [
            (self.mock(name), (name, "ActiveChanged")) for name in SCREEN_SAVERS
        ]
        for service, change in notices:
            service.EmitSignal(*change, "b", [True])
            self.assertEqual(
                1,
                self.assert_asks_for_discovery(
                    remote, lambda: service.EmitSignal(*change, "b", [False])
                ),
            )

        hide_window()
        self.assert_asks_for_discovery(remote, lambda: output_of(BINARY))

    def test_asks_for_discovery_when_the_network_changes(self):
        if subprocess.run(["unshare", "--net", "true"], check=False).returncode != 0:
            self.skipTest("a network namespace needs root")
        host, remote = self.start_remote(prefix=["unshare", "--net"])

        def ip(*change):
            output_of("nsenter", "--target", str(host.process.pid), "--net", "ip", *change)

        ip("link", "add", "near", "type", "veth", "peer", "name", "far")
        for change in (
            "link set lo up",
            "link set far up",
            "link set near up",
            "address add 192.0.2.2/24 dev near",
            "address delete 192.0.2.2/24 dev near",
            "address add 2001:db8::5/64 dev near",
            "link set near down",
        ):
            with self.subTest(change):
                self.assert_asks_for_discovery(remote, lambda: ip(*change.split()))

        # Without IPv6 a lost carrier changes no route.
        without_ipv6 = ("sysctl", "--quiet", "net.ipv6.conf.all.disable_ipv6=1")
        output_of("nsenter", "--target", str(host.process.pid), "--net", *without_ipv6)
        ip("address", "add", "192.0.2.2/24", "dev", "near")
        ip("link", "set", "near", "up")
        for change in (
            "link set far down",
            "link set far up",
            "address delete 192.0.2.2/24 dev near",
        ):
            with self.subTest(f"without IPv6: {change}"):
                self.assert_asks_for_discovery(remote, lambda: ip(*change.split()))


def notification_windows():
    return shown_windows("class", "xfce4-notifyd")


class NotificationTest(RemoteTest):
    """Notifications in a real desktop's notification service."""

    def show(self, remote, title, body):
        self.assertEqual(
            remote.call("showNotification", id="transfer", title=title, body=body), {"value": None}
        )
        return wait_until(notification_windows, "the notification")

    def test_shows_replaces_opens_and_clears(self):
        host, remote = self.start_remote()
        self.assertEqual(remote.call("requestNotificationPermission"), {"value": True})
        self.show(remote, "Receiving", "photo.jpg")
        (window,) = map(str, self.show(remote, "Received from Ada", "<b>1 & 2</b>.jpg"))
        picture("notification", "480x200+800+0")
        hide_window()
        size = output_of("xdotool", "getwindowgeometry", window).split()[-1]
        width, height = map(int, size.split("x"))
        button = (width - 57, height - 32)  # "Open"
        mouse("mousemove", "--window", window, *button, "click", 1)
        wait_until(visible_window, "the window")
        wait_until(lambda: not notification_windows(), "the notification to go")

        self.show(remote, "Received", "later")
        self.assertEqual(host.stop(), 0)
        _, remote = self.start_remote()
        remote.call("clearNotification", id="transfer")
        wait_until(lambda: not notification_windows(), "the notification to go")


if __name__ == "__main__":
    unittest.main(verbosity=2)
