#pragma once

#include "platform/foundation/Place.h"

#include <filesystem>

namespace brevanholt::platform {

// What of the file system the UI's code may use, as the host decides. For the main thread. Both
// throw PlatformError where it may not, also for a path that is relative or has "." or ".." in it.
class FileAccess {
 public:
  virtual ~FileAccess() = default;
  // To look at and read, and to list the names in a folder.
  [[nodiscard]] virtual Reach toRead(const std::filesystem::path& path) = 0;
  // To create, write, replace, move and remove.
  [[nodiscard]] virtual Reach toChange(const std::filesystem::path& path) = 0;
};

}  // namespace brevanholt::platform
