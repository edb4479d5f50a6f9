#pragma once

#include "platform/desktop/Color.h"

#include <gtkmm/widget.h>

namespace brevanholt::platform {

struct Rgba {
  double red = 0;
  double green = 0;
  double blue = 0;
  double alpha = 1;
  friend bool operator==(const Rgba&, const Rgba&) = default;
};

// Whether text of this colour implies a dark background.
[[nodiscard]] bool isLight(const Rgba& color);

// What a colour looks like beside text of the given colour, which stands for the theme.
[[nodiscard]] Rgba colorBeside(SystemColor color, const Rgba& text);

// The text colour of the widget in the current theme.
[[nodiscard]] Rgba textColorOf(const Gtk::Widget& widget);

}  // namespace brevanholt::platform
