#include "platform/linux/tray/PanelStyle.h"

#include <algorithm>
#include <array>

namespace brevanholt::platform {
namespace {

constexpr std::array<std::string_view, 6> kColorNamedIcons{"Budgie",   "GNOME", "KDE",
                                                           "Pantheon", "Unity", "XFCE"};
// Their panels follow the toolkit's theme. Those that are left come dark: Cinnamon, LXQt, bars of
// tiling window managers.
constexpr std::array<std::string_view, 2> kFollowTheTheme{"LXDE", "MATE"};
constexpr Rgba kLight{.red = 0.93, .green = 0.93, .blue = 0.93, .alpha = 1};

bool hasAny(std::string_view currentDesktop, const auto& known) {
  while (!currentDesktop.empty()) {
    const std::string_view part = currentDesktop.substr(0, currentDesktop.find(':'));
    if (std::ranges::find(known, part) != known.end()) return true;
    currentDesktop.remove_prefix(std::min(part.size() + 1, currentDesktop.size()));
  }
  return false;
}

}  // namespace

PanelStyle panelStyle(std::string_view currentDesktop) {
  return {.colorsNamedIcons = hasAny(currentDesktop, kColorNamedIcons),
          .isDark = !currentDesktop.empty() && !hasAny(currentDesktop, kColorNamedIcons) &&
                    !hasAny(currentDesktop, kFollowTheTheme)};
}

Rgba panelColor(const PanelStyle& style, const Rgba& themeText) {
  return style.isDark ? kLight : themeText;
}

}  // namespace brevanholt::platform
