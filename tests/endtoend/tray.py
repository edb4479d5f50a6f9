"""What a panel sees of the status item, and a recorder of what the item says on the bus."""

import os
import pathlib
import subprocess
import time

import gi

gi.require_version("Gio", "2.0")
from gi.repository import Gio, GLib  # noqa: E402  (after the version)

from host import output_of, wait_until  # noqa: E402

PICTURES = pathlib.Path(os.environ.get("BREVANHOLT_PICTURES", "/tmp/brevanholt-pictures"))


class Tray:
    """The status item of one host, as its panel talks to it."""

    def __init__(self, process):
        self.name = f"org.kde.StatusNotifierItem-{process}-1"
        self.bus = Gio.bus_get_sync(Gio.BusType.SESSION)

    def call(self, path, interface, method, arguments):
        return self.bus.call_sync(self.name, path, interface, method, arguments, None,
                                  Gio.DBusCallFlags.NONE, 5000, None).unpack()

    def property(self, name):
        return self.call("/StatusNotifierItem", "org.freedesktop.DBus.Properties", "Get",
                         GLib.Variant("(ss)", ("org.kde.StatusNotifierItem", name)))[0]

    def rows(self):
        """(id, label or "---") of each row of the menu."""
        _, layout = self.call("/StatusMenu", "com.canonical.dbusmenu", "GetLayout",
                              GLib.Variant("(iias)", (0, -1, ["label", "type"])))
        return [(row[0], row[1].get("label", "---")) for row in layout[2]]

    def click(self, label):
        identifier = next(row for row, text in self.rows() if text == label)
        self.call("/StatusMenu", "com.canonical.dbusmenu", "Event",
                  GLib.Variant("(isvu)", (identifier, "clicked", GLib.Variant("i", 0), 0)))

    def is_registered(self):
        try:
            items = self.bus.call_sync(
                "org.kde.StatusNotifierWatcher", "/StatusNotifierWatcher",
                "org.freedesktop.DBus.Properties", "Get",
                GLib.Variant("(ss)", ("org.kde.StatusNotifierWatcher",
                                      "RegisteredStatusNotifierItems")),
                None, Gio.DBusCallFlags.NONE, 1000, None).unpack()[0]
        except GLib.Error:
            return False
        return any(item.startswith(self.name) for item in items)


class Recorder:
    """Counts the signals of the menu while it runs."""

    def __init__(self, name):
        self.process = subprocess.Popen(
            ["dbus-monitor", "--session",
             f"type='signal',sender='{name}',interface='com.canonical.dbusmenu'"],
            stdout=subprocess.PIPE, text=True)
        wait_until(lambda: "NameAcquired" in self.process.stdout.readline(), "the recorder")

    def stop(self):
        time.sleep(0.5)  # what is on its way arrives; nothing else tells that nothing more comes
        self.process.terminate()
        text = self.process.communicate()[0]
        return {member: text.count(f"member={member}")
                for member in ("LayoutUpdated", "ItemsPropertiesUpdated")}


def icon_place():
    """Where the status icon is: the panel's tray is left of its clock."""
    clock_left = 1208
    return clock_left - 14, 16


def picture(name, crop=None):
    """A screenshot once nothing changes any more; kept where the test run keeps its pictures."""
    PICTURES.mkdir(parents=True, exist_ok=True)
    path = PICTURES / f"{name}.png"
    scripts = pathlib.Path(__file__).resolve().parents[2] / "scripts"
    subprocess.run([scripts / "settled-screenshot", path], check=True)
    if crop:
        subprocess.run(["convert", path, "-crop", crop, "+repage", path], check=True)
    return path


def colours_in(path):
    """How many pixels of a picture have which colour, as {(red, green, blue): count}."""
    counts = {}
    for line in output_of("convert", str(path), "-alpha", "off", "-depth", "8", "-format", "%c",
                          "histogram:info:-").splitlines():
        count, _, rest = line.strip().partition(":")
        digits = rest.split("#")[1][:6]
        counts[tuple(int(digits[at:at + 2], 16) for at in (0, 2, 4))] = int(count)
    return counts


def pixels_like(colour, path):
    """How many pixels of a picture are of that colour, give or take what antialiasing does."""
    return sum(count for seen, count in colours_in(path).items()
               if all(abs(one - other) <= 3 for one, other in zip(seen, colour)))
