"""The shipped views on a made-up application, in the engine that shows them."""

import pathlib
import shutil
import subprocess
import tempfile
import unittest

from host import SOURCE, HostTest, Orders, output_of, visible_window, wait_until
from tray import PICTURES

STATES = ("empty", "ready", "asking", "confirming", "active", "recents", "busy",
          "changed", "dragging",
          "problem", "long")
WIDTHS = (380, 640, 1100)


def use_theme(name):
    subprocess.run(["xfconf-query", "--channel", "xsettings", "--property", "/Net/ThemeName",
                    "--set", name], check=True)


class ViewsTest(HostTest):

    def start_page(self, scenario, *arguments):
        """A host with a bundle of the shipped views and the tests' own pages."""
        bundle = pathlib.Path(tempfile.mkdtemp())
        self.addCleanup(shutil.rmtree, bundle)
        shutil.copytree(SOURCE / "ui", bundle, dirs_exist_ok=True,
                        ignore=shutil.ignore_patterns("index.html", "main.js", "engine"))
        shutil.copytree(SOURCE / "tests/ui", bundle, dirs_exist_ok=True)
        host = self.start(scenario=scenario, arguments=arguments, more_bundle=bundle)
        wait_until(visible_window, "the window")
        return host

    def start_views(self):
        orders = Orders()
        self.start_page("views", f"folder={orders.folder}")
        return orders

    def keys(self, *names):
        output_of("xdotool", "key", "--delay", "60", *names)

    def wait_for_focus(self, orders, name):
        wait_until(lambda: orders.give({"look": True})["focus"] == name, f"focus on {name}", 15)

    def test_keeps_its_promises(self):
        passed = self.start_page("checks").report()
        self.assertIn("progressDoesNotChatter", passed)
        self.assertIn("recordsArriveOnceInOrderOrNotAtAll", passed)
        self.assertGreater(len(passed), 20)

    def test_fits_every_width_in_light_and_dark(self):
        orders = self.start_views()
        window = visible_window()
        PICTURES.mkdir(parents=True, exist_ok=True)
        self.addCleanup(use_theme, "Adwaita")
        for theme, is_dark in (("Adwaita", False), ("Adwaita-dark", True)):
            use_theme(theme)
            wait_until(lambda: orders.give({"look": True})["isDark"] == is_dark, theme)
            for width in WIDTHS:
                output_of("xdotool", "windowsize", "--sync", window, str(width), "780")
                wait_until(lambda: orders.give({"look": True})["width"] == width, f"width {width}")
                for state in STATES:
                    with self.subTest(theme=theme, width=width, state=state):
                        seen = orders.give({"show": state})
                        self.assertFalse(seen["scrolls"])
                        self.assertEqual(seen["sticksOut"], [])
                        self.assertEqual(seen["refusals"], [])
                        output_of("import", "-window", window,
                                  str(PICTURES / f"views-{theme}-{width}-{state}.png"))
        orders.give({"show": "recents"})
        wait_until(lambda: orders.give({"look": True})["pictures"] == 2, "the previews")

    def test_works_by_keyboard_alone(self):
        orders = self.start_views()
        orders.give({"show": "asking"})
        output_of("wmctrl", "-i", "-a", visible_window())
        expected = ["Visible nearby", "Settings", "Accept 12 files from Pixel 9",
                    "Decline 12 files from Pixel 9", "Add files", "Add folder", "Write text"]
        for name in expected:
            self.keys("Tab")
            self.wait_for_focus(orders, name)

        self.keys("Return")
        self.wait_for_focus(orders, "Text to send")
        output_of("xdotool", "type", "--delay", "40", "hello")
        self.keys("ctrl+Return")
        self.wait_for_focus(orders, "Write text")
        self.assertEqual(orders.give({"look": True})["calls"], [["addText", "hello"]])

        self.keys("Return")
        self.wait_for_focus(orders, "Text to send")
        self.keys("Escape")
        self.wait_for_focus(orders, "Write text")

        for name in reversed(expected[:-1]):
            self.keys("shift+Tab")
            self.wait_for_focus(orders, name)
        self.keys("Tab", "Return")
        self.wait_for_focus(orders, "Settings")  # its heading
        self.assertEqual(orders.give({"look": True})["dialogs"], 1)
        self.keys("Escape")
        wait_until(lambda: orders.give({"look": True})["dialogs"] == 0, "the dialog to close")
        self.wait_for_focus(orders, "Settings")
        self.keys("Tab", "Return")
        wait_until(lambda: ["accept", "a1"] in orders.give({"look": True})["calls"], "accepting")


if __name__ == "__main__":
    unittest.main(verbosity=2)
