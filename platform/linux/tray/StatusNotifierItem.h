#pragma once

#include "platform/linux/bus/BusObject.h"
#include "platform/linux/menu/UpdateThrottle.h"
#include "platform/linux/tray/TrayRegistration.h"

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace brevanholt::platform {

// A picture as status trays take it: 32 bits a pixel, alpha first, each byte in network order.
struct TrayPixmap {
  std::int32_t width = 0;
  std::int32_t height = 0;
  std::vector<std::uint8_t> pixels;
};

struct TrayAppearance {
  std::string title;
  std::string toolTip;
  std::string iconName;       // looked for in iconThemePath and in the desktop's themes
  std::string iconThemePath;  // empty for the desktop's themes alone
  std::vector<TrayPixmap> pixmaps;
  bool needsAttention = false;
};

// The item on the bus, as org.kde.StatusNotifierItem (freedesktop StatusNotifierItem
// specification).
class StatusNotifierItem {
 public:
  struct Events {
    // The user clicked the item, at that place of the screen.
    std::function<void(int x, int y)> activated;
    // The token with which the next window may take the focus.
    std::function<void(const std::string& token)> activationTokenGiven;
    // Whether a tray shows the item now.
    std::function<void(bool)> shownChanged;
  };

  // With `opensMenu` a click opens the tray's own rendering of the menu at that object path.
  StatusNotifierItem(Bus& bus, std::string menuPath, bool opensMenu, Events events);
  StatusNotifierItem(const StatusNotifierItem&) = delete;
  StatusNotifierItem& operator=(const StatusNotifierItem&) = delete;

  // Tells what has changed, and nothing else, at most ten times a second.
  void setAppearance(TrayAppearance appearance);

 private:
  [[nodiscard]] GVariant* call(std::string_view method, GVariant* parameters);
  [[nodiscard]] GVariant* property(std::string_view name) const;
  void tellOfChanges();

  std::string menuPath_;
  bool opensMenu_;
  Events events_;
  TrayAppearance appearance_;
  TrayAppearance told_;  // of which the tray knows
  BusObject object_;
  TrayRegistration registration_;
  UpdateThrottle throttle_;
};

}  // namespace brevanholt::platform
