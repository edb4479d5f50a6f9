#include "platform/engine/web/files/FileOperations.h"

#include "platform/foundation/Files.h"
#include "platform/foundation/PlatformError.h"

#include <cerrno>
#include <cstdio>
#include <fstream>
#include <string>

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

namespace brevanholt::platform {
namespace {

const char* kindOf(mode_t mode) {
  if (S_ISREG(mode)) return "file";
  return S_ISDIR(mode) ? "directory" : "other";
}

std::int64_t milliseconds(const timespec& time) {
  return static_cast<std::int64_t>(time.tv_sec) * 1000 + time.tv_nsec / 1'000'000;
}

// From /proc: umask() tells the mask only by changing it, which would affect other threads.
mode_t umaskOfProcess() {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with("Umask:")) return static_cast<mode_t>(std::stoul(line.substr(6), {}, 8));
  }
  return 0077;
}

mode_t permissionsOfNewFiles() {
  static const mode_t kPermissions = 0666 & ~umaskOfProcess();
  return kPermissions;
}

timespec timeOf(std::int64_t milliseconds) {
  return {milliseconds / 1000, (milliseconds % 1000) * 1'000'000};
}

}  // namespace

Value statFile(const std::filesystem::path& path) {
  struct stat information {};
  if (::stat(path.c_str(), &information) != 0) {
    if (errno == ENOENT || errno == ENOTDIR) return {};
    throw FileError("look at", path, errno);
  }
  return Map{{"kind", kindOf(information.st_mode)},
             {"size", static_cast<std::int64_t>(information.st_size)},
             {"modified", milliseconds(information.st_mtim)}};
}

FileDescriptor editFile(const std::filesystem::path& path) {
  FileDescriptor descriptor(::open(path.c_str(), O_WRONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  struct stat information {};
  if (!descriptor || ::fstat(descriptor.get(), &information) != 0) {
    throw FileError("open the file", path, errno);
  }
  if (!S_ISREG(information.st_mode)) throw FileError("open the file", path, EINVAL);
  return descriptor;
}

Bytes readRange(int descriptor, std::int64_t offset, std::size_t length) {
  const auto storage = std::make_shared_for_overwrite<std::uint8_t[]>(length);
  std::size_t filled = 0;
  while (filled < length) {
    const ssize_t count = ::pread(descriptor, storage.get() + filled, length - filled,
                                  offset + static_cast<std::int64_t>(filled));
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) throw FileError("read", "the file", errno);
    if (count == 0) break;
    filled += static_cast<std::size_t>(count);
  }
  return {{storage.get(), filled}, storage};
}

void writeAt(int descriptor, std::int64_t offset, const Bytes& bytes) {
  std::size_t written = 0;
  while (written < bytes.size()) {
    const ssize_t count = ::pwrite(descriptor, bytes.data() + written, bytes.size() - written,
                                   offset + static_cast<std::int64_t>(written));
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) throw FileError("write", "the file", errno);
    written += static_cast<std::size_t>(count);
  }
}

void flushFile(int descriptor) {
  if (::fdatasync(descriptor) != 0) throw FileError("save", "the file", errno);
}

void settleFile(const std::filesystem::path& path, std::int64_t modified) {
  const FileDescriptor file = editFile(path);
  const timespec times[] = {{0, UTIME_OMIT}, timeOf(modified)};
  if (::futimens(file.get(), times) != 0 || ::fchmod(file.get(), permissionsOfNewFiles()) != 0 ||
      ::fsync(file.get()) != 0) {
    throw FileError("save", path, errno);
  }
}

std::int64_t freeSpace(const std::filesystem::path& folder) {
  struct statvfs information {};
  if (::statvfs(folder.c_str(), &information) != 0) throw FileError("look at", folder, errno);
  return static_cast<std::int64_t>(information.f_bavail * information.f_frsize);
}

Value listNames(const std::filesystem::path& folder) {
  List names;
  std::error_code failure;
  for (std::filesystem::directory_iterator at(folder, failure), end; !failure && at != end;
       at.increment(failure)) {
    names.emplace_back(at->path().filename().native());
  }
  if (failure && failure != std::errc::no_such_file_or_directory) {
    throw FileError("list", folder, failure.value());
  }
  return names;
}

void moveFile(const std::filesystem::path& from, const std::filesystem::path& to) {
  if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) != 0) {
    throw FileError("move", from, errno);
  }
  syncDirectory(to.parent_path());
}

void removeFile(const std::filesystem::path& path) {
  if (::unlink(path.c_str()) != 0 && errno != ENOENT) throw FileError("remove", path, errno);
}

}  // namespace brevanholt::platform
