#include "platform/foundation/PlatformError.h"

#include <system_error>

namespace brevanholt::platform {

SystemError::SystemError(std::string_view action, int errorNumber)
    : PlatformError(
          "Could not " + std::string(action) + ": " + std::generic_category().message(errorNumber),
          errorNumber) {}

FileError::FileError(std::string_view action, const std::filesystem::path& path, int errorNumber)
    : SystemError(std::string(action) + " “" + path.string() + "”", errorNumber) {}

}  // namespace brevanholt::platform
