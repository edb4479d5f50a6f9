"""A page that is controlled from here: it makes calls and hears events on the caller's behalf."""

from stage.host import Orders, wait_until


class Remote:
    """One run of that page; give a host its scenario and `arguments`."""

    def __init__(self):
        self._orders = Orders()
        self.arguments = [f"folder={self._orders.folder}"]

    def begin(self, method, **arguments):
        """Makes a call and returns its number."""
        return len(self._orders.give({"method": method, "args": arguments})["replies"]) - 1

    def reply(self, number):
        """{"value": …}, {"error": …} or {"missing": true}; None so far."""
        return self._orders.give({})["replies"][number]

    def finish(self, number):
        return wait_until(lambda: self.reply(number), f"the reply to call {number}")

    def call(self, method, **arguments):
        return self.finish(self.begin(method, **arguments))

    def events(self):
        """[method, arguments] of what was handed in, as the host has told of it so far."""
        return [
            event
            for event in self._orders.give({})["events"]
            if event[0] != "discoveryRecoveryRequested"
        ]

    def wait_for_events(self, count):
        return wait_until(
            lambda: len(events := self.events()) >= count and events, f"event {count}"
        )

    def requests(self):
        """How often the host has asked to look for devices anew."""
        events = self._orders.give({})["events"]
        return sum(method == "discoveryRecoveryRequested" for method, _ in events)
