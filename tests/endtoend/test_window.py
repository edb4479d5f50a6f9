"""The shipped window on a desktop: its keys, what is pasted into it, how it ends and what it looks like."""

import os
import pathlib
import subprocess
import unittest

from cases import HostTest
from stage.host import BINARY, Orders, output_of, visible_window, wait_until
from stage.station import bundle_with_hand, follow_orders
from tray import mouse, picture

HOME = pathlib.Path(os.environ["HOME"])
PORTAL = "org.freedesktop.portal.Desktop"
SETTINGS = "org.freedesktop.portal.Settings"


class WindowTest(HostTest):
    def start_window(self, **environment):
        self.orders = Orders()
        bundle = bundle_with_hand(self.new_folder() / "bundle")
        options = follow_orders(bundle, self.orders)
        host = self.start(*options, "--developer-tools", environment=environment)
        self.window = wait_until(visible_window, "the window")
        output_of("wmctrl", "-i", "-a", self.window)
        return host

    def sees(self, text):
        wait_until(lambda: text in self.orders.give({})["text"], f"“{text}”")

    def key(self, name):
        mouse("key", "--delay", 60, name)

    def copy(self, target, content):
        with subprocess.Popen(
            ["xclip", "-selection", "clipboard", "-target", target], stdin=subprocess.PIPE
        ) as clipboard:
            clipboard.communicate(content)

    def test_is_used_and_ended_by_keys(self):
        host = self.start_window()
        self.sees("Nearby")
        self.key("ctrl+comma")
        self.sees("Received files are saved to this folder")
        self.key("Escape")
        self.key("ctrl+question")
        self.sees("Paste files, pictures or text")
        picture("window-shortcuts")
        self.key("Escape")
        file = HOME / "two words.txt"
        file.write_text("pasted")
        self.copy("text/uri-list", f"file://{HOME}/two%20words.txt\r\n".encode())
        self.key("ctrl+v")
        self.sees("two words.txt 6 bytes")
        self.key("ctrl+v")
        self.sees("two words.txt is already in the list.")
        self.copy("UTF8_STRING", b"a text that was copied")
        self.key("ctrl+v")
        self.sees("a text that was copied")
        logo = pathlib.Path(__file__).parents[2] / "packaging/icons/brevanholt_logo.png"
        self.copy("image/png", logo.read_bytes())
        self.key("ctrl+v")
        self.sees("3 items")
        picture("window-pasted")
        staged = list((HOME / "Downloads/.NativeShareInbox").rglob("Picture*.png"))
        self.assertEqual(len(staged), 1)
        self.orders.give({"press": "Clear what will be sent"})
        self.sees("Removed 3 items.")
        self.orders.give({"press": "Undo"})
        self.sees("3 items")
        self.key("ctrl+plus")
        wait_until(lambda: '"zoom":110' in self.settings_text(), "the zoom")
        self.key("ctrl+q")
        self.assertEqual(host.process.wait(20), 0)

    def settings_text(self):
        found = list(HOME.rglob("settings.json"))
        return found[0].read_text() if found else ""

    def test_says_once_that_it_stays_where_nothing_shows_it(self):
        self.start_window()
        self.sees("Nearby")
        output_of("wmctrl", "-i", "-c", self.window)
        self.sees("Brevanholt goes on receiving")
        picture("window-stays")
        self.orders.give({"press": "Keep receiving"})
        wait_until(lambda: not visible_window(), "hiding")
        subprocess.run([BINARY], check=True, timeout=20)
        wait_until(visible_window, "the window again")
        output_of("wmctrl", "-i", "-c", visible_window())
        wait_until(lambda: not visible_window(), "hiding without a question")

    def test_looks_as_the_portal_says(self):
        address = self.start_bus()
        mock = self.mock(PORTAL, "/org/freedesktop/portal/desktop", SETTINGS, address=address)
        answer = (
            "ret = {'org.freedesktop.appearance': {'color-scheme': dbus.UInt32(1), "
            "'contrast': dbus.UInt32(1), "
            "'accent-color': dbus.Struct((0.9, 0.4, 0.1), signature='ddd')}}"
        )
        mock.AddMethod(SETTINGS, "ReadAll", "as", "a{sa{sv}}", answer)
        host = self.start_window(
            DBUS_SESSION_BUS_ADDRESS=address, LANGUAGE="de", LANG="de_DE.UTF-8"
        )
        self.sees("In der Nähe")
        picture("window-dark-german")
        looks = wait_until(
            lambda: (found := self.orders.give({})["looks"])["isDark"] and found,
            "the dark colours",
        )
        self.assertEqual(looks["classes"], "high-contrast")
        self.assertTrue(looks["accent"].startswith("rgb("), looks)
        self.orders.give({"log": "said by the page"})
        wait_until(lambda: "said by the page" in host.log, "the page's words")


if __name__ == "__main__":
    unittest.main(verbosity=2)
