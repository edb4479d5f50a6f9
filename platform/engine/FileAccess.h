#pragma once

#include "platform/files/Place.h"
#include "platform/foundation/Result.h"
#include "platform/foundation/UniqueFunction.h"

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace brevanholt::platform {

// What goes to where received files are, under a free name at its relative path there.
struct ReceivedFile {
  // A file that may be changed; none for an empty one, which is made.
  std::optional<std::filesystem::path> path;
  std::string relativePath;
  std::int64_t modified = 0;  // of one that is made, in milliseconds since 1970
};

// What of the file system the UI's code may use, as the host decides. For the main thread. The
// first two throw PlatformError where it may not, also for a path that is relative or has "." or
// ".." in it.
class FileAccess {
 public:
  using Published = UniqueFunction<void(std::vector<Result<std::filesystem::path>>)>;

  virtual ~FileAccess() = default;
  // To look at and read, and to list the names in a folder.
  [[nodiscard]] virtual Reach toRead(const std::filesystem::path& path) = 0;
  // To create, write, replace, move and remove.
  [[nodiscard]] virtual Reach toChange(const std::filesystem::path& path) = 0;
  // `done` gets for each file its final path, when all of them outlast a power cut, or why it is
  // not there. Does not throw.
  virtual void publish(std::vector<ReceivedFile> files, Published done) = 0;
};

}  // namespace brevanholt::platform
