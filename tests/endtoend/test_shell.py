"""The status item and its menus in a real panel, and the program without one."""

import subprocess
import unittest

from host import HostTest, output_of, visible_window, wait_until
from shell import Shell
from tray import Recorder, colours_in, icon_place, picture, pixels_like

MENU = "620x420+660+0"
GREEN, RED, BLUE = (38, 163, 105), (191, 28, 41), (26, 94, 181)


def transfer(title, state="sending", progress=0.3, label="30 %"):
    return {"title": title, "item": f"{title} with a rather long name of its own.zip",
            "stateKey": state, "progress": progress, "progressLabel": label}


class PanelTest(HostTest):

    def test_shows_icon_tooltip_and_menus(self):
        shell = Shell(self)
        shell.show({})
        wait_until(shell.tray.is_registered, "the panel to take the icon")

        x, y = icon_place()
        icon = picture("icon", f"30x30+{x - 15}+{y - 15}")
        self.assertTrue(any(sum(colour) < 200 for colour in colours_in(icon)), "the icon is drawn")
        output_of("xdotool", "mousemove", str(x), str(y))
        picture("tooltip", MENU)

        shell.open_menu()
        self.assertGreater(pixels_like(GREEN, picture("menu-idle", MENU)), 10)
        shell.close_menu()

        shell.show({"visible": False})
        shell.open_menu()
        self.assertEqual(pixels_like(GREEN, picture("menu-visibility-off", MENU)), 0)
        shell.close_menu()

        shell.show({"activeTransfer": transfer("Sending to Ada", progress=0.2, label="20 %")})
        shell.open_menu()
        blue_before = pixels_like(BLUE, picture("menu-active-20", MENU))
        shell.show({"activeTransfer": transfer("Sending to Ada", progress=0.8, label="80 %")})
        blue_after = pixels_like(BLUE, picture("menu-active-80", MENU))
        self.assertGreater(blue_after, blue_before + 400, "the open menu's bar has grown")
        shell.close_menu()

        recents = [transfer("Complete", "complete", 1, "Done"), transfer("Failed", "failed"),
                   transfer("Cancelled", "cancelled"), transfer("Waiting", "waiting")]
        shell.show({"activeTransfer": transfer("Sending to Ada"), "recentTransfers": recents})
        shell.open_menu()
        recents = picture("menu-recents", MENU)
        for colour in (GREEN, RED, BLUE):
            self.assertGreater(pixels_like(colour, recents), 10, colour)
        shell.close_menu()
        output_of("xdotool", "mousemove", str(x), str(y), "click", "3")
        picture("menu-of-the-panel", MENU)
        shell.close_menu()
        self.assertEqual(shell.tray.property("ToolTip")[2], "Brevanholt — 30 %")

    def test_asks_for_discovery_when_the_menu_opens_and_comes_back_by_it(self):
        shell = Shell(self)
        before = shell.show({})["requests"]
        wait_until(shell.tray.is_registered, "the panel to take the icon")
        shell.open_menu()
        wait_until(lambda: shell.show({})["requests"] == before + 1, "the request")
        shell.close_menu()

        output_of("wmctrl", "-i", "-c", visible_window())
        wait_until(lambda: not visible_window(), "hiding")
        shell.tray.click("Open Brevanholt")
        wait_until(visible_window, "the window")
        shell.tray.click("Quit Brevanholt")
        self.assertEqual(shell.host.process.wait(20), 0)

    def test_sends_a_thousand_updates_as_few_signals(self):
        shell = Shell(self)
        shell.show({"activeTransfer": transfer("Busy", progress=0)})
        wait_until(shell.tray.is_registered, "the panel to take the icon")
        rows = shell.tray.rows()
        recorder = Recorder(shell.tray.name)
        shell.show([{"activeTransfer": transfer("Busy", progress=step / 1000, label=f"step {step}")}
                    for step in range(1, 1001)])
        wait_until(lambda: any(label == "step 1000" for _, label in shell.tray.rows()), "the last")
        signals = recorder.stop()
        self.assertEqual(signals["LayoutUpdated"], 0)
        self.assertGreaterEqual(signals["ItemsPropertiesUpdated"], 1)
        self.assertLessEqual(signals["ItemsPropertiesUpdated"], 60)
        self.assertEqual([row for row, _ in shell.tray.rows()], [row for row, _ in rows])

    def test_outlives_its_panel(self):
        shell = Shell(self)
        wait_until(shell.tray.is_registered, "the panel to take the icon")
        output_of("xfce4-panel", "--quit")
        wait_until(lambda: not shell.tray.is_registered(), "the panel to be gone")
        # It ends with the desktop, not with this test: the others need a panel too.
        subprocess.Popen(["xfce4-panel"], stderr=subprocess.DEVNULL)
        wait_until(shell.tray.is_registered, "the new panel to take the icon")
        shell.show({"visible": False})
        shell.open_menu()
        picture("menu-after-panel-restart", MENU)
        self.assertIn("Visibility is turned off", [label for _, label in shell.tray.rows()])


if __name__ == "__main__":
    unittest.main(verbosity=2)
