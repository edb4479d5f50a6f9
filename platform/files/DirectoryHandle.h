#pragma once

#include "platform/files/FileDescriptor.h"

#include <cstddef>
#include <filesystem>
#include <string>

namespace brevanholt::platform {

// A folder held open. Reading and removing happen in that very folder, even if its name belongs to
// another one by then. Links are not followed, the folder's own name included. Failures are
// FileErrors.
class DirectoryHandle {
 public:
  explicit DirectoryHandle(std::filesystem::path path);

  // The whole content of a regular file of at most `limit` bytes; never waits for a pipe or device.
  [[nodiscard]] std::string readFile(const std::string& name, std::size_t limit) const;
  void removeFile(const std::string& name) const;
  // Moves a file into another folder of the same file system, in the place of what is there.
  void moveFile(const std::string& name, const DirectoryHandle& folder,
                const std::string& newName) const;

 private:
  std::filesystem::path path_;
  FileDescriptor descriptor_;
};

}  // namespace brevanholt::platform
