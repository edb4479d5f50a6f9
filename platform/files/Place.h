#pragma once

#include "platform/files/FileDescriptor.h"

#include <filesystem>
#include <optional>
#include <string>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>

namespace brevanholt::platform {

// What of the file system may be used. The root is opened as it is named, links followed, for the
// person or the host has named it. What is below it, and nothing for the root itself, is reached
// without links.
struct Reach {
  std::filesystem::path root;
  std::filesystem::path below = {};
  // The device and inode of the only file that it may be.
  std::optional<std::pair<dev_t, ino_t>> identity = std::nullopt;

  [[nodiscard]] std::filesystem::path path() const { return below.empty() ? root : root / below; }
};

// Where a reach leads just now: a folder that is open, and a name in it. Whatever others do to the
// folders on the way meanwhile, nothing outside the reach is used. Blocks. All throw FileError.
class Place {
 public:
  // ELOOP where there is a link on the way, or a file in a folder's place.
  explicit Place(const Reach& reach);

  // As it was asked for.
  [[nodiscard]] const std::filesystem::path& path() const { return path_; }
  [[nodiscard]] int folder() const { return folder_ ? folder_.get() : AT_FDCWD; }
  [[nodiscard]] const char* name() const { return name_.c_str(); }

  // False where there is nothing. ESTALE where something else is there than what may be reached.
  [[nodiscard]] bool look(struct stat& information) const;
  // The same for another name in the folder of a place below a root.
  [[nodiscard]] bool lookBeside(const std::string& name, struct stat& information) const;
  // As open(). Links are not followed at the end of a path below a root.
  [[nodiscard]] FileDescriptor open(int flags, mode_t mode = 0) const;
  // A regular file, for reading. Never waits for a pipe or a device.
  [[nodiscard]] FileDescriptor openToRead() const { return openRegular(O_RDONLY); }
  // A new file, for writing; the name must be free.
  [[nodiscard]] FileDescriptor create() const { return open(O_WRONLY | O_CREAT | O_EXCL, 0600); }
  // A regular file that was created earlier, to go on writing to it.
  [[nodiscard]] FileDescriptor openToWrite() const { return openRegular(O_WRONLY); }
  // Removes a file or a link, never a folder. Nothing there is no error.
  void remove() const;
  // Makes the names in the place's folder outlast a power cut.
  void syncFolder() const;

 private:
  [[nodiscard]] FileDescriptor openRegular(int flags) const;
  void check(const struct stat& information) const;

  std::filesystem::path path_;
  FileDescriptor folder_;  // none for a root, which is named by its path
  std::string name_;
  std::optional<std::pair<dev_t, ino_t>> identity_;
};

}  // namespace brevanholt::platform
