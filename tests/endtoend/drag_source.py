"""A window from which something of a type is dragged: drag_source.py TYPE DATA."""

import sys

import gi

gi.require_version("Gdk", "3.0")
gi.require_version("Gtk", "3.0")
from gi.repository import Gdk, Gtk  # noqa: E402  (after the versions)

window = Gtk.Window(title="Drag source")
box = Gtk.EventBox()
box.drag_source_set(
    Gdk.ModifierType.BUTTON1_MASK, [Gtk.TargetEntry.new(sys.argv[1], 0, 0)], Gdk.DragAction.COPY
)
box.connect(
    "drag-data-get",
    lambda _box, _context, selection, _info, _time: selection.set(
        selection.get_target(), 8, sys.argv[2].encode()
    ),
)
window.add(box)
window.show_all()
Gtk.main()
