#pragma once

namespace brevanholt::platform {

// In logical pixels of the screen.
struct ScreenPoint {
  int x = 0;
  int y = 0;
  friend bool operator==(const ScreenPoint&, const ScreenPoint&) = default;
};

// Where to open a menu. `given` is what a tray sent with a click: some trays count in logical
// pixels, some in those of the device (`scale` to each), and some send a place that means nothing.
// A click is where the pointer is, so only a place near it counts.
[[nodiscard]] ScreenPoint popupPlace(ScreenPoint given, ScreenPoint pointer, int scale);

}  // namespace brevanholt::platform
