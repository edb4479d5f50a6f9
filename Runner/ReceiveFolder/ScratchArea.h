#pragma once

#include "platform/services/KnownFolders.h"

#include <filesystem>
#include <optional>

namespace brevanholt {

// The folder in which received files are written before they are published: `current`, or
// "Brevanholt" in the temporary folder, or, where another user could change files there, in this
// user's cache folder. Created if it is missing. Throws PlatformError where neither can be used.
[[nodiscard]] std::filesystem::path preparedScratchArea(
    const std::optional<std::filesystem::path>& current, const platform::KnownFolders& folders);

}  // namespace brevanholt
