#pragma once

#include "platform/linux/bus/Bus.h"

#include <functional>
#include <string>

namespace brevanholt::platform {

// How the person wants programs to look.
struct Appearance {
  bool isDark = false;
  bool hasHighContrast = false;
  std::string accent;  // “#rrggbb”; empty where the desktop has none

  friend bool operator==(const Appearance&, const Appearance&) = default;
};

// The person's wishes by the desktop's portal (org.freedesktop.portal.Settings, the namespace
// org.freedesktop.appearance), and where it does not answer by GNOME's settings, if there are any.
class DesktopAppearance {
 public:
  // `changed` is called with what is wanted first, where that differs from Appearance(), and with
  // each change.
  DesktopAppearance(Bus& sessionBus, std::function<void(const Appearance&)> changed);
  DesktopAppearance(const DesktopAppearance&) = delete;
  DesktopAppearance& operator=(const DesktopAppearance&) = delete;

  [[nodiscard]] const Appearance& current() const { return appearance_; }

 private:
  void read();
  void readSettings();
  void take(const Appearance& appearance);

  Bus& sessionBus_;
  std::function<void(const Appearance&)> changed_;
  Appearance appearance_;
  BusSubscription changes_;
  std::vector<GObjectPointer<GSettings>> settings_;
  Lifetime lifetime_;
};

}  // namespace brevanholt::platform
