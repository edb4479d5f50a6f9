#include "platform/files/FileDescriptor.h"
#include "platform/files/Files.h"
#include "platform/foundation/PlatformError.h"

#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace brevanholt::platform {
namespace {

namespace fs = std::filesystem;

constexpr mode_t kOthers = 0077;

// Whether another user could rename a directory below `path` away: everybody may write to `path` or
// to a directory above it, and its sticky bit does not protect what is in it.
bool isOpenToEverybody(fs::path path) {
  for (;; path = path.parent_path()) {
    struct stat information {};
    if (::stat(path.c_str(), &information) != 0) return true;
    if ((information.st_mode & S_IWOTH) != 0 && (information.st_mode & S_ISVTX) == 0) return true;
    if (!path.has_relative_path()) return false;
  }
}

}  // namespace

void createPrivateDirectory(const fs::path& path) {
  createDirectories(path.parent_path());
  const auto refuse = [&path](int error) { throw FileError("use the folder", path, error); };
  if (::mkdir(path.c_str(), 0700) != 0 && errno != EEXIST) {
    throw FileError("create the folder", path, errno);
  }
  const FileDescriptor directory(
      ::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
  struct stat information {};
  if (!directory || ::fstat(directory.get(), &information) != 0) refuse(errno);
  if (information.st_uid != ::geteuid()) refuse(EPERM);
  const bool isShared = (information.st_mode & kOthers) != 0;
  if (isShared && ::fchmod(directory.get(), information.st_mode & ~kOthers & 07777) != 0) {
    refuse(errno);
  }
  if (isOpenToEverybody(path.parent_path())) refuse(EPERM);
}

}  // namespace brevanholt::platform
