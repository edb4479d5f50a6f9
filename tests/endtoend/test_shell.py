"""The status item and its menus in a real panel."""

import re
import unittest

from stage.host import hide_window, output_of, visible_window, visible_windows, wait_until
from cases import RemoteTest
from tray import GREEN, ICON, MENU, close_menu, darkest, mouse, open_menu, picture, pixels_like

RED, BLUE = (191, 28, 41), (26, 94, 181)


def transfer(title, state="sending", progress=0.3):
    return {
        "title": title,
        "item": f"{title} with a rather long name of its own.zip",
        "stateKey": state,
        "progress": progress,
        "progressLabel": f"{progress:.0%}",
    }


class PanelTest(RemoteTest):
    def test_shows_icon_tooltip_and_menus(self):
        _, remote = self.start_remote()

        def menu(name, **state):
            remote.call("updateDesktopShell", **state)
            open_menu()
            shown = picture(name, MENU)
            close_menu()
            return shown

        self.assertGreater(pixels_like(GREEN, menu("menu-idle")), 10)
        self.assertLess(darkest(picture("icon", "30x30+1179+1")), 0.3, "the icon is drawn")
        mouse("mousemove", *ICON)
        picture("tooltip", MENU)
        self.assertEqual(pixels_like(GREEN, menu("menu-visibility-off", visible=False)), 0)
        recents = menu(
            "menu-recents",
            activeTransfer=transfer("Sending to Ada"),
            recentTransfers=[
                transfer("Complete", "complete", 1),
                transfer("Failed", "failed"),
                transfer("Cancelled", "cancelled"),
                transfer("Waiting", "waiting"),
            ],
        )
        for colour in (GREEN, RED, BLUE):
            self.assertGreater(pixels_like(colour, recents), 10, colour)

    def test_asks_for_discovery_when_the_menu_opens_and_comes_back_by_it(self):
        host, remote = self.start_remote()
        before = remote.requests()
        for times in (1, 2):  # the window has the focus again in between, and asks for nothing
            open_menu()
            wait_until(lambda: remote.requests() >= before + times, "the request")
            close_menu()
        self.assertEqual(remote.requests(), before + 2)
        hide_window()
        open_menu()
        mouse("key", "Up", "Up", "Return")
        wait_until(visible_window, "the window")
        open_menu()
        mouse("key", "ctrl+q")
        self.assertEqual(host.process.wait(20), 0)

    def test_an_open_menu_follows_and_keeps_what_is_selected(self):
        host, remote = self.start_remote()
        hide_window()
        open_menu()

        def menu_height():
            (menu,) = map(str, visible_windows())
            geometry = output_of("xdotool", "getwindowgeometry", "--shell", menu)
            return int(re.search(r"HEIGHT=(\d+)", geometry)[1])

        idle = menu_height()
        mouse("key", "Up", "Up")
        recents = [transfer(f"Transfer {number}", "complete", 1) for number in range(4)]
        remote.call("updateDesktopShell", recentTransfers=recents)
        wait_until(lambda: menu_height() > idle + 100, "the rows of the transfers")
        remote.call("updateDesktopShell")
        wait_until(lambda: menu_height() == idle, "their end")
        mouse("key", "Return")
        wait_until(visible_window, "the window")
        self.assertIsNone(host.process.poll())


if __name__ == "__main__":
    unittest.main(verbosity=2)
