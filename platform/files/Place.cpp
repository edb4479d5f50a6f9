#include "platform/files/Place.h"

#include "platform/foundation/PlatformError.h"

#include <cerrno>

#include <fcntl.h>
#include <unistd.h>

namespace brevanholt::platform {
namespace {

constexpr int kFolder = O_PATH | O_DIRECTORY | O_CLOEXEC;

}  // namespace

Place::Place(const Reach& reach)
    : path_(reach.path()),
      name_(reach.below.empty() ? reach.root.native() : reach.below.filename().native()),
      identity_(reach.identity) {
  if (reach.below.empty()) return;
  folder_ = FileDescriptor(::open(reach.root.c_str(), kFolder));
  // A folder at a time: openat2() can do it at once, but not on every kernel and in every sandbox.
  for (const std::filesystem::path& name : reach.below.parent_path()) {
    if (!folder_) break;
    folder_ = FileDescriptor(::openat(folder_.get(), name.c_str(), kFolder | O_NOFOLLOW));
  }
  if (!folder_) throw FileError("reach", path_, errno == ENOTDIR ? ELOOP : errno);
}

bool Place::look(struct stat& information) const {
  if (!lookBeside(name_, information)) return false;
  check(information);
  return true;
}

bool Place::lookBeside(const std::string& name, struct stat& information) const {
  const int flags = folder_ ? AT_SYMLINK_NOFOLLOW : 0;
  if (::fstatat(folder(), name.c_str(), &information, flags) == 0) return true;
  if (errno == ENOENT || errno == ENOTDIR) return false;
  throw FileError("look at", path_.parent_path() / name, errno);
}

FileDescriptor Place::open(int flags, mode_t mode) const {
  if (folder_) flags |= O_NOFOLLOW;
  FileDescriptor file(::openat(folder(), name(), flags | O_NONBLOCK | O_NOCTTY | O_CLOEXEC, mode));
  struct stat information {};
  if (!file || ::fstat(file.get(), &information) != 0) throw FileError("open", path_, errno);
  check(information);
  return file;
}

FileDescriptor Place::openRegular(int flags) const {
  FileDescriptor file = open(flags);
  struct stat information {};
  if (::fstat(file.get(), &information) != 0) throw FileError("open", path_, errno);
  if (S_ISDIR(information.st_mode)) throw FileError("open", path_, EISDIR);
  if (!S_ISREG(information.st_mode)) throw FileError("open", path_, EINVAL);
  return file;
}

void Place::remove() const {
  if (::unlinkat(folder(), name(), 0) != 0 && errno != ENOENT) {
    throw FileError("remove", path_, errno);
  }
}

void Place::syncFolder() const {
  const FileDescriptor readable(::openat(folder(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!readable || ::fsync(readable.get()) != 0) throw FileError("save", path_, errno);
}

void Place::check(const struct stat& information) const {
  if (identity_ && *identity_ != std::pair(information.st_dev, information.st_ino)) {
    throw FileError("reach", path_, ESTALE);
  }
}

}  // namespace brevanholt::platform
