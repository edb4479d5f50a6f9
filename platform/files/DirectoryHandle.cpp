#include "platform/files/DirectoryHandle.h"

#include "platform/foundation/PlatformError.h"

#include <cerrno>
#include <cstdio>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace brevanholt::platform {

DirectoryHandle::DirectoryHandle(std::filesystem::path path)
    : path_(std::move(path)),
      descriptor_(::open(path_.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC)) {
  if (!descriptor_) throw FileError("open the folder", path_, errno);
}

std::string DirectoryHandle::readFile(const std::string& name, std::size_t limit) const {
  const auto fail = [&](int error) { throw FileError("read the file", path_ / name, error); };
  const FileDescriptor file(::openat(descriptor_.get(), name.c_str(),
                                     O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  struct stat information {};
  if (!file || ::fstat(file.get(), &information) != 0) fail(errno);
  if (S_ISDIR(information.st_mode)) fail(EISDIR);
  if (!S_ISREG(information.st_mode)) fail(EINVAL);
  if (static_cast<std::size_t>(information.st_size) > limit) fail(EFBIG);

  std::string content(static_cast<std::size_t>(information.st_size) + 1, '\0');
  std::size_t length = 0;
  for (;;) {
    const ssize_t count = ::read(file.get(), content.data() + length, content.size() - length);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) fail(errno);
    length += static_cast<std::size_t>(count);
    if (count == 0) break;
    if (length > limit) fail(EFBIG);
    if (length == content.size()) content.resize(length * 2);  // it grows as it is read
  }
  content.resize(length);
  return content;
}

void DirectoryHandle::removeFile(const std::string& name) const {
  if (::unlinkat(descriptor_.get(), name.c_str(), 0) != 0) {
    throw FileError("remove the file", path_ / name, errno);
  }
}

void DirectoryHandle::moveFile(const std::string& name, const DirectoryHandle& folder,
                               const std::string& newName) const {
  if (::renameat(descriptor_.get(), name.c_str(), folder.descriptor_.get(), newName.c_str()) != 0) {
    throw FileError("move the file", path_ / name, errno);
  }
}

}  // namespace brevanholt::platform
