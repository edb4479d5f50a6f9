"""The pointer and the keys, the status icon and its menu, and pictures of what is shown."""

import os
import pathlib
import subprocess

from stage.host import (
    SOURCE,
    holds_within,
    managed_windows,
    output_of,
    shown_windows,
    visible_windows,
    wait_until,
)

PICTURES = pathlib.Path(os.environ.get("BREVANHOLT_PICTURES", "/tmp/brevanholt-pictures"))
ICON = (1194, 16)  # the panel's tray is left of its clock
MENU = "620x420+660+0"  # where menus from there are
GREEN = (38, 163, 105)  # what says in a menu that all is well


def mouse(*orders):
    """Runs xdotool with these arguments."""
    output_of("xdotool", *map(str, orders))


def glide(start, end, steps=12):
    """Moves the pointer in small steps: GTK follows a drag by its motion events."""
    for step in range(steps + 1):
        mouse("mousemove", *(a + (b - a) * step // steps for a, b in zip(start, end)))


def window_titled(title):
    return next(map(str, shown_windows("name", f"^{title}$")), None)


def menu_is_open():
    """Whether the program's own menu is shown, a window that the window manager does not manage."""
    return bool(set(visible_windows()) - set(managed_windows()))


def open_menu():
    def opened():
        mouse("mousemove", *ICON, "click", 1)
        return holds_within(5, menu_is_open)

    # The panel accepts an icon shortly before it places it.
    wait_until(opened, "the menu")


def close_menu():
    mouse("key", "Escape", "mousemove", 600, 700)
    wait_until(lambda: not menu_is_open(), "the menu's end")


def picture(name, crop=None):
    """A screenshot once nothing changes any more; kept where the test run keeps its pictures."""
    PICTURES.mkdir(parents=True, exist_ok=True)
    path = PICTURES / f"{name}.png"
    subprocess.run([SOURCE / "scripts/settled-screenshot", path], check=True)
    if crop:
        output_of("convert", path, "-crop", crop, "+repage", path)
    return path


def darkest(path):
    """How light the darkest pixel of a picture is, from 0 to 1."""
    least = ("-colorspace", "Gray", "-format", "%[fx:minima]", "info:")
    return float(output_of("convert", path, *least))


def pixels_like(colour, path):
    """How many pixels of a picture are of that colour, with a tolerance for antialiasing."""
    alike = f"-alpha off -fuzz 2% -fill black +opaque rgb{colour} -fuzz 0 -fill white +opaque black"
    alike = alike.replace(", ", ",").split()
    return round(float(output_of("convert", path, *alike, "-format", "%[fx:mean*w*h]", "info:")))
