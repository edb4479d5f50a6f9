#pragma once

#include "platform/linux/menu/Palette.h"

#include <string_view>

namespace brevanholt::platform {

// How the desktop's panel treats the icon of a status item.
struct PanelStyle {
  // It gives a symbolic icon that is named the colour of its own text. Else it draws the icon's
  // file as it is, and needs pixels in a colour that shows.
  bool colorsNamedIcons = false;
  // It is dark as the desktop comes, whatever the toolkit's theme.
  bool isDark = false;
};

// By the names in XDG_CURRENT_DESKTOP.
[[nodiscard]] PanelStyle panelStyle(std::string_view currentDesktop);

// The colour for what is drawn on the panel, by the text colour of the toolkit's theme.
[[nodiscard]] Rgba panelColor(const PanelStyle& style, const Rgba& themeText);

}  // namespace brevanholt::platform
