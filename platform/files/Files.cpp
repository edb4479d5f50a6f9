#include "platform/files/Files.h"

#include "platform/foundation/PlatformError.h"

#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace brevanholt::platform {

std::optional<std::filesystem::path> pathFrom(std::string_view text) {
  if (text.find('\0') != std::string_view::npos) return std::nullopt;
  return std::filesystem::path(text);
}

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

FileDescriptor createFile(const std::filesystem::path& path, mode_t mode) {
  FileDescriptor descriptor(
      ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, mode));
  if (!descriptor) throw FileError("create the file", path, errno);
  return descriptor;
}

void writeAll(int descriptor, std::string_view content) {
  while (!content.empty()) {
    const ssize_t written = ::write(descriptor, content.data(), content.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) throw SystemError("write the file", errno);
    content.remove_prefix(static_cast<std::size_t>(written));
  }
}

bool setModified(int descriptor, std::int64_t milliseconds) {
  const timespec times[] = {{0, UTIME_OMIT},
                            {milliseconds / 1000, (milliseconds % 1000) * 1'000'000}};
  return ::futimens(descriptor, times) == 0;
}

std::vector<std::filesystem::path> createDirectories(const std::filesystem::path& path,
                                                     mode_t mode) {
  std::vector<std::filesystem::path> changed;
  int error = ::mkdir(path.c_str(), mode) == 0 ? 0 : errno;
  if (error == ENOENT && path.has_relative_path()) {
    changed = createDirectories(path.parent_path(), mode);
    error = ::mkdir(path.c_str(), mode) == 0 ? 0 : errno;
  }
  if (error == 0) {
    changed.push_back(path.parent_path());
  } else if (!isDirectory(path)) {
    throw FileError("create the folder", path, error == EEXIST ? ENOTDIR : error);
  }
  return changed;
}

bool removeEmptyDirectory(const std::filesystem::path& path) {
  return ::rmdir(path.c_str()) == 0;
}

void syncDirectory(const std::filesystem::path& path) {
  const FileDescriptor directory(::open(path.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!directory || ::fsync(directory.get()) != 0) throw FileError("save the folder", path, errno);
}

}  // namespace brevanholt::platform
