#include "platform/foundation/Files.h"

#include "platform/foundation/PlatformError.h"

#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace brevanholt::platform {

bool fileExists(const std::filesystem::path& path) {
  struct stat information {};
  return ::stat(path.c_str(), &information) == 0;
}

bool nameIsTaken(const std::filesystem::path& path) {
  struct stat information {};
  return ::lstat(path.c_str(), &information) == 0;
}

bool isDirectory(const std::filesystem::path& path) {
  struct stat information {};
  return ::stat(path.c_str(), &information) == 0 && S_ISDIR(information.st_mode);
}

std::optional<std::uint64_t> fileSize(const std::filesystem::path& path) {
  struct stat information {};
  if (::stat(path.c_str(), &information) != 0) return std::nullopt;
  return static_cast<std::uint64_t>(information.st_size);
}

FileDescriptor openRegularFile(const std::filesystem::path& path) {
  FileDescriptor descriptor(::open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  struct stat information {};
  if (!descriptor || ::fstat(descriptor.get(), &information) != 0) {
    throw FileError("open", path, errno);
  }
  if (S_ISDIR(information.st_mode)) throw FileError("open", path, EISDIR);
  if (!S_ISREG(information.st_mode)) throw FileError("open", path, EINVAL);
  return descriptor;
}

void createDirectories(const std::filesystem::path& path) {
  std::error_code error;
  std::filesystem::create_directories(path, error);
  if (error) throw FileError("create the folder", path, error.value());
  if (!std::filesystem::is_directory(path, error)) {
    throw FileError("create the folder", path, ENOTDIR);
  }
}

bool removeEmptyDirectory(const std::filesystem::path& path) {
  return ::rmdir(path.c_str()) == 0;
}

void syncDirectory(const std::filesystem::path& path) {
  const FileDescriptor directory(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!directory || ::fsync(directory.get()) != 0) throw FileError("save the folder", path, errno);
}

}  // namespace brevanholt::platform
