#include "platform/linux/window/GdkScreens.h"

#include <gdk/gdk.h>

namespace brevanholt::platform {

std::optional<double> GdkScreens::mainScaleFactor() const {
  GdkDisplay* display = gdk_display_get_default();
  if (display == nullptr) return std::nullopt;
  GdkMonitor* monitor = gdk_display_get_primary_monitor(display);
  if (monitor == nullptr) monitor = gdk_display_get_monitor(display, 0);
  if (monitor == nullptr) return std::nullopt;
  return gdk_monitor_get_scale_factor(monitor);
}

}  // namespace brevanholt::platform
