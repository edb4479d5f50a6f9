#include "platform/linux/portal/Flatpak.h"

#include "platform/files/Files.h"

namespace brevanholt::platform {

bool isInFlatpak() {
  static const bool isInside = fileExists("/.flatpak-info");
  return isInside;
}

}  // namespace brevanholt::platform
