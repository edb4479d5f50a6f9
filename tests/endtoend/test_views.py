"""The shipped views on a made-up application, in the engine that shows them."""

import pathlib
import shutil
import subprocess
import tempfile
import unittest

from cases import HostTest
from stage.host import SOURCE, Orders, output_of, visible_window, wait_until
from stage.station import bundle_of_views
from tray import PICTURES

STATES = (
    "empty",
    "ready",
    "requests",
    "waiting",
    "active",
    "recents",
    "changed",
    "dragging",
    "long",
)
WIDTHS = (380, 640, 1100)
DIALOGS = ("menu.settings", "menu.shortcuts", "menu.about")
AXE = SOURCE / "scripts/tools/node_modules/axe-core/axe.min.js"


def use_theme(name):
    subprocess.run(
        ["xfconf-query", "--channel", "xsettings", "--property", "/Net/ThemeName", "--set", name],
        check=True,
    )


class ViewsTest(HostTest):
    def setUp(self):
        """Makes a bundle of the shipped views and the tests' own pages."""
        self.bundle = bundle_of_views(pathlib.Path(tempfile.mkdtemp()), SOURCE / "tests/ui")
        self.addCleanup(shutil.rmtree, self.bundle)
        self.has_axe = AXE.exists()  # a tool from npm, which may be out of reach
        if self.has_axe:
            shutil.copy(AXE, self.bundle)

    def start_views(self):
        orders = Orders()
        self.start(scenario="views", arguments=[f"folder={orders.folder}"], more_bundle=self.bundle)
        wait_until(visible_window, "the window")
        return orders.give

    def test_keeps_its_promises(self):
        passed = self.run_scenario("checks", more_bundle=self.bundle)
        self.assertIn("strangersHaveFewAndSmallRecords", passed)

    def test_fits_every_width_in_light_and_dark(self):
        give = self.start_views()
        window = visible_window()
        PICTURES.mkdir(parents=True, exist_ok=True)
        self.addCleanup(use_theme, "Adwaita")
        for theme, is_dark in (("Adwaita", False), ("Adwaita-dark", True)):
            use_theme(theme)
            wait_until(lambda: give({})["isDark"] == is_dark, theme)
            for width in WIDTHS:
                output_of("xdotool", "windowsize", "--sync", window, str(width), "780")
                wait_until(lambda: give({})["width"] == width, f"width {width}")
                for state in STATES:
                    with self.subTest(theme=theme, width=width, state=state):
                        seen = give({"show": state})
                        self.assertEqual((seen["scrolls"], seen["sticksOut"]), (False, []))
                        self.assertEqual(seen["refusals"], [])
                        kept = PICTURES / f"views-{theme}-{width}-{state}.png"
                        output_of("import", "-window", window, kept)
            for order in [{"show": state} for state in STATES] + [
                {"show": "known", "open": entry} for entry in DIALOGS
            ]:
                with self.subTest(theme=theme, **order):
                    if self.has_axe:
                        self.assertEqual(give({**order, "axe": True})["faults"], [])
        for width in WIDTHS[:2]:
            output_of("xdotool", "windowsize", "--sync", window, str(width), "780")
            for language in ("de", "ar"):
                for state in STATES:
                    with self.subTest(language=language, width=width, state=state):
                        seen = give({"show": state, "language": language})
                        self.assertEqual((seen["scrolls"], seen["sticksOut"]), (False, []))
        give({"show": "recents"})
        wait_until(lambda: give({})["pictures"] == 2, "the previews")

    def test_works_by_keyboard_alone(self):
        give = self.start_views()
        give({"show": "requests"})
        output_of("wmctrl", "-i", "-a", visible_window())

        def press(key, focus):
            output_of("xdotool", "key", "--delay", "60", key)
            wait_until(lambda: give({})["focus"] == focus, f"focus on {focus}", 15)

        controls = [
            "Visible nearby",
            "Menu",
            "They match",
            "They differ",
            "What is in IMG_2041.jpg and 3 more",
            "Trip20 files, 8.0 MB",
            "Accept IMG_2041.jpg and 3 more from Pixel 9",
            "Decline IMG_2041.jpg and 3 more from Pixel 9",
            "Add files",
            "Add folder",
            "Write text",
        ]
        for name in controls:
            press("Tab", name)
        press("Return", "Text to send")
        output_of("xdotool", "type", "--delay", "40", "hello")
        press("ctrl+Return", "Write text")
        press("Return", "Text to send")
        press("Escape", "Write text")
        for name in controls[-2:0:-1]:
            press("shift+Tab", name)
        press("Return", "SettingsCtrl+Comma")
        press("Return", "Settings")  # the dialog's heading
        wait_until(lambda: give({})["dialogs"] == 1, "the dialog")
        press("Escape", "Menu")
        self.assertEqual(give({})["dialogs"], 0)
        for name in controls[2:7]:
            press("Tab", name)
        output_of("xdotool", "key", "Return")
        wait_until(
            lambda: give({})["calls"] == [["choosing.addText", "hello"], ["courier.accept", "a1"]],
            "the calls",
        )


if __name__ == "__main__":
    unittest.main(verbosity=2)
