#include "platform/foundation/PlatformError.h"

#include <system_error>

namespace brevanholt::platform {
namespace {

std::string describe(std::string_view action, const std::filesystem::path& path, int errorNumber) {
  return "Could not " + std::string(action) + " “" + path.string() +
         "”: " + std::generic_category().message(errorNumber);
}

}  // namespace

FileError::FileError(std::string_view action, const std::filesystem::path& path, int errorNumber)
    : PlatformError(describe(action, path, errorNumber)), errorNumber_(errorNumber) {}

}  // namespace brevanholt::platform
