#include "platform/foundation/MoveIntoPlace.h"

#include "platform/foundation/FileDescriptor.h"
#include "platform/foundation/Files.h"
#include "platform/foundation/Log.h"
#include "platform/foundation/PlatformError.h"
#include "platform/foundation/Uuid.h"

#include <cerrno>
#include <cstdio>
#include <memory>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace brevanholt::platform {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kCopyBuffer = 1 << 20;

// For file systems without RENAME_NOREPLACE: a second name, which fails where one is taken, and
// then the first name away. Folders cannot have two names, but rename() onto a folder only takes an
// empty one, and this one was just made.
int linkThenUnlink(const fs::path& source, const fs::path& destination) {
  if (fs::is_directory(fs::symlink_status(source))) {
    if (::mkdir(destination.c_str(), 0700) != 0) return errno;
    if (::rename(source.c_str(), destination.c_str()) == 0) return 0;
    const int error = errno;
    ::rmdir(destination.c_str());
    return error;
  }
  if (::link(source.c_str(), destination.c_str()) != 0) return errno;
  return ::unlink(source.c_str()) == 0 ? 0 : errno;
}

// Zero, or the error number.
int renameWithoutReplacing(const fs::path& source, const fs::path& destination) {
  if (::renameat2(AT_FDCWD, source.c_str(), AT_FDCWD, destination.c_str(), RENAME_NOREPLACE) == 0) {
    return 0;
  }
  if (errno != EINVAL && errno != ENOSYS) return errno;
  return linkThenUnlink(source, destination);
}

// A hidden file beside its destination; gone again unless it was renamed away.
class PartialFile {
 public:
  explicit PartialFile(const fs::path& destination)
      : path_(destination.parent_path() / ("." + makeUuid() + ".partial")),
        descriptor_(::open(path_.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600)) {
    if (!descriptor_) throw FileError("create the file", destination, errno);
  }
  ~PartialFile() {
    if (!kept_) ::unlink(path_.c_str());
  }
  PartialFile(const PartialFile&) = delete;
  PartialFile& operator=(const PartialFile&) = delete;

  [[nodiscard]] int descriptor() const { return descriptor_.get(); }
  // Zero, or the error number.
  int keepAs(const fs::path& destination) {
    const int error = renameWithoutReplacing(path_, destination);
    kept_ = error == 0;
    return error;
  }

 private:
  fs::path path_;
  FileDescriptor descriptor_;
  bool kept_ = false;
};

// Zero, or the error number.
int writeAll(int descriptor, const char* data, std::size_t size) {
  while (size > 0) {
    const ssize_t written = ::write(descriptor, data, size);
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) return errno;
    data += written;
    size -= static_cast<std::size_t>(written);
  }
  return 0;
}

// Zero, or the error number.
int copyContents(int from, int to) {
  const auto buffer = std::make_unique_for_overwrite<char[]>(kCopyBuffer);
  for (;;) {
    const ssize_t count = ::read(from, buffer.get(), kCopyBuffer);
    if (count == 0) return 0;
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return errno;
    if (const int error = writeAll(to, buffer.get(), static_cast<std::size_t>(count))) return error;
  }
}

}  // namespace

bool renameIntoPlace(const fs::path& source, const fs::path& destination) {
  const int error = renameWithoutReplacing(source, destination);
  if (error == EXDEV) return false;
  if (error != 0) throw FileError("move the item to", destination, error);
  return true;
}

void copyIntoPlace(const fs::path& source, const fs::path& destination) {
  const FileDescriptor from(::open(source.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  struct stat information {};
  if (!from || ::fstat(from.get(), &information) != 0) throw FileError("read", source, errno);
  if (!S_ISREG(information.st_mode)) throw FileError("move the item to", destination, EXDEV);

  PartialFile partial(destination);
  const int copyError = copyContents(from.get(), partial.descriptor());
  if (copyError != 0) throw FileError("write the file", destination, copyError);
  const timespec times[] = {information.st_atim, information.st_mtim};
  ::futimens(partial.descriptor(), times);
  if (::fchmod(partial.descriptor(), information.st_mode & 0777) != 0 ||
      ::fsync(partial.descriptor()) != 0) {
    throw FileError("save the file", destination, errno);
  }
  if (const int error = partial.keepAs(destination)) {
    throw FileError("move the item to", destination, error);
  }
  syncDirectory(destination.parent_path());
  if (::unlink(source.c_str()) != 0) {
    logWarning("a file was moved, but its source stays at " + source.string());
  }
}

}  // namespace brevanholt::platform
