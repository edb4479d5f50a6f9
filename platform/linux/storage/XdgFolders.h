#pragma once

#include "platform/services/KnownFolders.h"

namespace brevanholt::platform {

// This user's folders by the XDG Base Directory specification and xdg-user-dirs.
[[nodiscard]] KnownFolders xdgFolders();

}  // namespace brevanholt::platform
