"""A window from which files are dragged: drag_source.py TARGET DATA.

TARGET is the type that is offered, DATA what it comes to, its escapes ("\\r\\n") resolved.
"""

import sys

import gi

gi.require_version("Gdk", "3.0")
gi.require_version("Gtk", "3.0")
from gi.repository import Gdk, Gtk  # noqa: E402  (after the versions)

target, data = sys.argv[1], sys.argv[2].encode().decode("unicode_escape").encode("latin-1")
window = Gtk.Window(title="Drag source")
window.move(900, 60)
window.set_default_size(200, 100)
box = Gtk.EventBox()
box.add(Gtk.Label(label="drag me"))
box.drag_source_set(Gdk.ModifierType.BUTTON1_MASK, [Gtk.TargetEntry.new(target, 0, 0)],
                    Gdk.DragAction.COPY)
box.connect("drag-data-get", lambda _box, _context, selection, _info, _time: selection.set(
    selection.get_target(), 8, data))
window.add(box)
window.connect("destroy", Gtk.main_quit)
window.show_all()
Gtk.main()
