"""A host that a test can give orders to."""

from host import Orders, holds_within, managed_windows, output_of, visible_windows, wait_until
from tray import Tray, icon_place


class Shell:
    """A host whose page does what it is told to."""

    def __init__(self, test, **how):
        self.orders = Orders()
        self.host = test.start(scenario="shell", arguments=[f"folder={self.orders.folder}"], **how)
        self.tray = Tray(self.host.process.pid)

    def call(self, method, **arguments):
        """What the host replies: {"value": …} or {"error": [code, message, details]}."""
        return self.show({"method": method, "arguments": arguments})["outcome"]

    def requests(self):
        """How often the host has asked to look for devices anew."""
        return self.show([])["requests"]

    def show(self, state):
        """Sends one state, or a list of them, and returns what the page has counted."""
        return self.orders.give(state)

    def open_menu(self):
        def opened():
            x, y = icon_place()
            output_of("xdotool", "mousemove", str(x), str(y), "click", "1")
            return holds_within(5, menu_is_open)

        # The panel takes an icon a little before it has a place for it.
        wait_until(opened, "the menu")

    def close_menu(self):
        output_of("xdotool", "key", "Escape", "mousemove", "600", "700")
        wait_until(lambda: not menu_is_open(), "the menu's end")


def menu_is_open():
    """Whether the program's own menu shows, which the window manager leaves alone."""
    return bool(set(visible_windows()) - set(managed_windows()))
