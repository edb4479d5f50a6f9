#pragma once

#include <gtkmm/window.h>

namespace brevanholt::platform {

// Whether the display server's keyboard focus is in the window, even while a grab, as an open menu
// holds one, takes the keys elsewhere. The toolkit calls a window inactive then. On X11; false
// elsewhere.
[[nodiscard]] bool hasInputFocus(Gtk::Window& window);

}  // namespace brevanholt::platform
