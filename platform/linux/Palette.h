#pragma once

#include "platform/desktop/Color.h"

namespace brevanholt::platform {

struct Rgba {
  double red = 0;
  double green = 0;
  double blue = 0;
  double alpha = 1;
  friend bool operator==(const Rgba&, const Rgba&) = default;
};

// What a colour looks like beside text of the given colour, which stands for the theme.
[[nodiscard]] Rgba colorBeside(SystemColor color, const Rgba& text);

}  // namespace brevanholt::platform
