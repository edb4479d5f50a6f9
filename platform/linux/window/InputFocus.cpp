#include "platform/linux/window/InputFocus.h"

#include <gdk/gdkx.h>

namespace brevanholt::platform {

bool hasInputFocus(Gtk::Window& window) {
  GdkDisplay* display = gdk_display_get_default();
  if (!window.get_realized() || !GDK_IS_X11_DISPLAY(display)) return false;
  const Window toplevel = gdk_x11_window_get_xid(window.get_window()->gobj());
  Display* connection = GDK_DISPLAY_XDISPLAY(display);
  Window focus = None;
  int revert = 0;
  XGetInputFocus(connection, &focus, &revert);
  if (focus == toplevel) return true;
  if (focus == None || focus == PointerRoot) return false;

  // The toolkit has a child of its own that takes the keys.
  gdk_x11_display_error_trap_push(display);  // the focus may be gone by now
  Window root = None;
  Window parent = None;
  Window* children = nullptr;
  unsigned count = 0;
  const bool isKnown = XQueryTree(connection, focus, &root, &parent, &children, &count) != 0;
  gdk_x11_display_error_trap_pop_ignored(display);
  if (children != nullptr) XFree(children);
  return isKnown && parent == toplevel;
}

}  // namespace brevanholt::platform
