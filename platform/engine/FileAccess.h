#pragma once

#include "platform/foundation/Place.h"
#include "platform/foundation/Result.h"
#include "platform/foundation/UniqueFunction.h"

#include <filesystem>
#include <string>

namespace brevanholt::platform {

// What of the file system the UI's code may use, as the host decides. For the main thread. The
// first two throw PlatformError where it may not, also for a path that is relative or has "." or
// ".." in it.
class FileAccess {
 public:
  using Published = UniqueFunction<void(Result<std::filesystem::path>)>;

  virtual ~FileAccess() = default;
  // To look at and read, and to list the names in a folder.
  [[nodiscard]] virtual Reach toRead(const std::filesystem::path& path) = 0;
  // To create, write, replace, move and remove.
  [[nodiscard]] virtual Reach toChange(const std::filesystem::path& path) = 0;
  // Moves a file that may be changed to where received files go, under a free name at its relative
  // path there. `done` gets its final path when that outlasts a power cut. Does not throw.
  virtual void publish(const std::filesystem::path& path, const std::string& relativePath,
                       Published done) = 0;
};

}  // namespace brevanholt::platform
