"""A host that a test can give orders to."""

from host import Orders, output_of
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
        x, y = icon_place()
        output_of("xdotool", "mousemove", str(x), str(y), "click", "1")

    def close_menu(self):
        output_of("xdotool", "key", "Escape", "mousemove", "600", "700")
