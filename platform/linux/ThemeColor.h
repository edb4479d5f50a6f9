#pragma once

#include "platform/linux/Palette.h"

#include <gtkmm/widget.h>

namespace brevanholt::platform {

// The colour that the theme set now gives the widget's text.
[[nodiscard]] Rgba textColorOf(const Gtk::Widget& widget);

}  // namespace brevanholt::platform
