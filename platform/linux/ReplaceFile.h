#pragma once

#include <filesystem>
#include <string_view>

#include <sys/types.h>

namespace brevanholt::platform {

// Puts a file with this content in the place of the one that may be there, once the new one is on
// the disk: whenever the power goes, it is the old one or the new one. Throws PlatformError.
void replaceFile(const std::filesystem::path& path, std::string_view content, mode_t mode);

}  // namespace brevanholt::platform
