#include "platform/linux/portal/Flatpak.h"

#include "platform/foundation/Files.h"

namespace brevanholt::platform {

bool isInFlatpak() {
  static const bool isInside = fileExists("/.flatpak-info");
  return isInside;
}

}  // namespace brevanholt::platform
