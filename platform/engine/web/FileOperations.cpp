#include "platform/engine/web/FileOperations.h"

#include "platform/foundation/Files.h"
#include "platform/foundation/PlatformError.h"
#include "platform/foundation/Uuid.h"

#include <cerrno>
#include <cstdio>

#include <fcntl.h>
#include <sys/stat.h>
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

FileDescriptor createFile(const std::filesystem::path& path) {
  FileDescriptor descriptor(
      ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0600));
  if (!descriptor) throw FileError("create the file", path, errno);
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

void replaceFile(const std::filesystem::path& path, const Bytes& bytes) {
  const std::filesystem::path beside =
      path.parent_path() / ("." + path.filename().string() + "." + makeUuid());
  try {
    const FileDescriptor file = createFile(beside);
    writeAt(file.get(), 0, bytes);
    if (::fsync(file.get()) != 0) throw FileError("save", path, errno);
    if (::rename(beside.c_str(), path.c_str()) != 0) throw FileError("replace", path, errno);
  } catch (const FileError&) {
    ::unlink(beside.c_str());
    throw;
  }
  syncDirectory(path.parent_path());
}

void removeFile(const std::filesystem::path& path) {
  if (::unlink(path.c_str()) != 0 && errno != ENOENT) throw FileError("remove", path, errno);
}

}  // namespace brevanholt::platform
