#pragma once

namespace brevanholt::platform {

// Whether this process runs in a Flatpak, where the desktop is reached by portals.
[[nodiscard]] bool isInFlatpak();

}  // namespace brevanholt::platform
