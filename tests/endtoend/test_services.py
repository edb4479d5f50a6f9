"""What the desktop does for the host: notifications, login, sleep, network changes, its name."""

import configparser
import os
import pathlib
import signal
import subprocess
import unittest

import dbus
import dbusmock

from host import BINARY, HostTest, output_of, visible_window, wait_until
from shell import Shell
from tray import picture

AUTOSTART = pathlib.Path(os.environ["XDG_CONFIG_HOME"]) / "autostart"
LOGIND_MANAGER = "org.freedesktop.login1.Manager"
HOSTNAMED = "org.freedesktop.hostname1"
SCREEN_SAVER = "org.freedesktop.ScreenSaver"
TRANSFER = ("sleep", "Brevanholt", "Brevanholt file transfer", "block")


class ServicesTest(HostTest, dbusmock.DBusTestCase):

    @classmethod
    def setUpClass(cls):
        cls.start_system_bus()

    def mock(self, name, system_bus=True):
        """A service whose one object, and its interface, are where its name says."""
        path = "/" + name.replace(".", "/")
        server = self.spawn_server(name, path, name, system_bus=system_bus,
                                   stdout=subprocess.DEVNULL)
        self.addCleanup(server.wait)
        self.addCleanup(server.terminate)
        bus = self.get_dbus(system_bus=system_bus)
        return dbus.Interface(bus.get_object(name, path), dbusmock.MOCK_IFACE)

    def mock_logind(self):
        server, logind = self.spawn_server_template("logind", {}, subprocess.DEVNULL)
        self.addCleanup(server.wait)
        self.addCleanup(server.terminate)
        return logind

    def assert_asks_for_discovery(self, shell, cause):
        before = shell.requests()
        cause()
        wait_until(lambda: shell.requests() > before, "the request")
        return shell.requests() - before

    def test_is_called_what_the_computer_is_called(self):
        hostnamed = self.mock(HOSTNAMED)
        hostnamed.AddProperties(HOSTNAMED, {"PrettyHostname": "Ada’s computer 🎈"})
        shell = Shell(self)
        self.assertEqual(shell.call("deviceName"), {"value": "Ada’s computer 🎈"})
        hostnamed.UpdateProperties(HOSTNAMED, {"PrettyHostname": "Bob’s"})
        wait_until(lambda: shell.call("deviceName") == {"value": "Bob’s"}, "the new name")

    def test_keeps_the_system_awake_during_a_transfer(self):
        logind = self.mock_logind()

        def inhibitors():
            return [tuple(map(str, each[:4])) for each in logind.ListInhibitors(
                dbus_interface=LOGIND_MANAGER)]

        shell = Shell(self)
        for _ in range(2):
            for _ in range(2):
                shell.call("setBackgroundMode", enabled=True, transferInProgress=True)
            wait_until(lambda: inhibitors() == [TRANSFER], "the inhibitor")
            shell.call("setBackgroundMode", enabled=True)
            wait_until(lambda: not inhibitors(), "the inhibitor's end")
        for _ in range(20):  # some end before the answer comes
            shell.call("setBackgroundMode", enabled=True, transferInProgress=True)
            shell.call("setBackgroundMode", enabled=False, transferInProgress=True)
        wait_until(lambda: not inhibitors(), "the end of them all")

        shell.call("setBackgroundMode", enabled=True, transferInProgress=True)
        wait_until(lambda: inhibitors() == [TRANSFER], "the inhibitor")
        os.kill(shell.host.process.pid, signal.SIGKILL)
        wait_until(lambda: not inhibitors(), "the inhibitor's end with the program")

    def test_asks_for_discovery_after_waking(self):
        logind = self.mock_logind()
        manager = dbus.Interface(logind, dbusmock.MOCK_IFACE)
        screen_saver = self.mock(SCREEN_SAVER, system_bus=False)
        shell = Shell(self)
        wait_until(visible_window, "the window")

        def sleep(begins):
            manager.EmitSignal(LOGIND_MANAGER, "PrepareForSleep", "b", [begins])

        def blank(begins):
            screen_saver.EmitSignal(SCREEN_SAVER, "ActiveChanged", "b", [begins])

        for change in (sleep, blank):
            change(True)
            self.assertEqual(self.assert_asks_for_discovery(shell, lambda: change(False)), 1)
        self.assertNotIn("there is no logind", shell.host.log)

    def test_asks_for_discovery_when_its_window_becomes_key(self):
        shell = Shell(self)
        window = wait_until(visible_window, "the window")
        other = subprocess.Popen(["xev"], stdout=subprocess.DEVNULL)
        self.addCleanup(other.wait)
        self.addCleanup(other.kill)
        wait_until(lambda: "Event Tester" in output_of("wmctrl", "-l"), "the other window")
        output_of("wmctrl", "-a", "Event Tester")
        wait_until(lambda: "Event Tester" in output_of("xdotool", "getactivewindow",
                                                       "getwindowname"), "the other to be active")
        self.assertEqual(self.assert_asks_for_discovery(
            shell, lambda: output_of("wmctrl", "-i", "-a", window)), 1)

    def test_asks_for_discovery_when_the_network_changes(self):
        if subprocess.run(["unshare", "--net", "true"], check=False).returncode != 0:
            self.skipTest("a network namespace needs root")
        shell = Shell(self, prefix=["unshare", "--net"])
        self.assertGreaterEqual(shell.requests(), 1)

        def ip(*change):
            output_of("nsenter", "--target", str(shell.host.process.pid), "--net", "ip", *change)

        ip("link", "add", "near", "type", "veth", "peer", "name", "far")
        for change in ("link set lo up", "link set far up", "link set near up",
                       "address add 192.0.2.2/24 dev near", "address add 192.0.2.3/24 dev near",
                       "address delete 192.0.2.3/24 dev near",
                       "address add 2001:db8::5/64 dev near", "route add default via 192.0.2.1",
                       "link set far down", "link set near down"):
            with self.subTest(change):
                self.assert_asks_for_discovery(shell, lambda: ip(*change.split()))

    def test_starts_at_login_when_asked_to(self):
        shell = Shell(self)
        self.assertEqual(shell.call("launchAtStartupEnabled"), {"value": False})
        self.assertEqual(shell.call("setLaunchAtStartup", enabled=True), {"value": None})
        self.assertEqual(shell.call("launchAtStartupEnabled"), {"value": True})
        entry = configparser.RawConfigParser(delimiters="=")
        entry.read(AUTOSTART / "org.brevanholt.Brevanholt.desktop")
        self.assertEqual(entry["Desktop Entry"]["exec"],
                         f'"{pathlib.Path(BINARY).resolve()}" --login-item')
        self.assertEqual(shell.call("setLaunchAtStartup"), {"value": None})
        self.assertEqual(shell.call("launchAtStartupEnabled"), {"value": False})
        self.assertEqual(list(AUTOSTART.iterdir()), [])

        AUTOSTART.rmdir()
        AUTOSTART.write_text("in the way")
        self.addCleanup(AUTOSTART.unlink)
        code, message, _ = shell.call("setLaunchAtStartup", enabled=True)["error"]
        self.assertEqual(code, "platform_error")
        self.assertIn("Not a directory", message)


def notification_windows():
    found = subprocess.run(["xdotool", "search", "--onlyvisible", "--class", "xfce4-notifyd"],
                           capture_output=True, text=True, check=False, timeout=30)
    return found.stdout.split()


class NotificationTest(HostTest):
    """Notifications in a real desktop's notification service."""

    def show(self, shell, title, body):
        self.assertEqual(shell.call("showNotification", id="transfer", title=title, body=body),
                         {"value": None})

    def clear(self, shell):
        self.assertEqual(shell.call("clearNotification", id="transfer"), {"value": None})
        wait_until(lambda: not notification_windows(), "the notification to go")

    def test_shows_replaces_and_clears(self):
        shell = Shell(self)
        self.assertEqual(shell.call("requestNotificationPermission"), {"value": True})
        self.show(shell, "Receiving", "photo.jpg")
        wait_until(lambda: len(notification_windows()) == 1, "the notification")
        self.show(shell, "Received from Ada", "<b>1 & 2</b>.jpg")
        picture("notification", "480x200+800+0")
        self.assertEqual(len(notification_windows()), 1)
        self.clear(shell)
        self.clear(shell)

        self.show(shell, "Received", "later")
        wait_until(notification_windows, "the notification")
        self.assertEqual(shell.host.stop(), 0)
        self.clear(Shell(self))

    def test_comes_to_the_front_when_one_is_opened(self):
        shell = Shell(self)
        self.show(shell, "Received from Ada", "photo.jpg")
        output_of("wmctrl", "-i", "-c", wait_until(visible_window, "the window"))
        wait_until(lambda: not visible_window(), "hiding")
        window = wait_until(notification_windows, "the notification")[0]
        size = dict(line.split("=") for line in output_of(
            "xdotool", "getwindowgeometry", "--shell", window).splitlines())
        output_of("xdotool", "mousemove", "--window", window, str(int(size["WIDTH"]) - 57),
                  str(int(size["HEIGHT"]) - 32), "click", "1")
        wait_until(visible_window, "the window")
        picture("after-opening-a-notification")

    def test_knows_when_the_desktop_has_them_off(self):
        setting = ["xfconf-query", "--channel", "xfce4-notifyd", "--property"]
        shell = Shell(self)
        for name, value in (("/do-not-disturb", ["--type", "bool", "--set", "true"]),
                            ("/applications/muted_applications",
                             ["--force-array", "--type", "string", "--set", "Brevanholt"])):
            output_of(*setting, name, "--create", *value)
            self.assertEqual(shell.call("requestNotificationPermission"), {"value": False}, name)
            output_of(*setting, name, "--reset")
            self.assertEqual(shell.call("requestNotificationPermission"), {"value": True}, name)


if __name__ == "__main__":
    unittest.main(verbosity=2)
