#include "platform/engine/web/files/FileOperations.h"

#include "platform/files/Files.h"
#include "platform/foundation/PlatformError.h"

#include <cerrno>
#include <cstdio>
#include <fstream>
#include <memory>
#include <string>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <unistd.h>

namespace brevanholt::platform {
namespace {

struct CloseDirectory {
  void operator()(DIR* directory) const { ::closedir(directory); }
};

const char* kindName(mode_t mode) {
  if (S_ISREG(mode)) return "file";
  return S_ISDIR(mode) ? "directory" : "other";
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

}  // namespace

std::int64_t millisecondsOf(const timespec& time) {
  return static_cast<std::int64_t>(time.tv_sec) * 1000 + time.tv_nsec / 1'000'000;
}

Value statFile(const Reach& reach) {
  struct stat information {};
  try {
    if (!Place(reach).look(information)) return {};
  } catch (const SystemError& error) {
    if (error.errorNumber() == ENOENT) return {};  // its folder is missing too
    throw;
  }
  return Map{{"kind", kindName(information.st_mode)},
             {"size", static_cast<std::int64_t>(information.st_size)},
             {"modified", millisecondsOf(information.st_mtim)}};
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

void settleFile(const WholeFile& whole) {
  const Place place(whole.reach);
  const FileDescriptor file = place.openToWrite();
  struct stat information {};
  if (!setModified(file.get(), whole.modified) ||
      ::fchmod(file.get(), permissionsOfNewFiles()) != 0 ||
      ::fstat(file.get(), &information) != 0 ||
      (information.st_size > 0 && ::fsync(file.get()) != 0)) {
    throw FileError("save", place.path(), errno);
  }
}

std::int64_t freeSpace(const Place& folder) {
  struct statvfs information {};
  if (::fstatvfs(folder.open(O_RDONLY | O_DIRECTORY).get(), &information) != 0) {
    throw FileError("look at", folder.path(), errno);
  }
  return static_cast<std::int64_t>(information.f_bavail * information.f_frsize);
}

Value listNames(const Place& folder) {
  List names;
  struct stat information {};
  if (!folder.look(information)) return names;
  FileDescriptor opened = folder.open(O_RDONLY | O_DIRECTORY);
  const std::unique_ptr<DIR, CloseDirectory> listing(::fdopendir(opened.get()));
  if (!listing) throw FileError("list", folder.path(), errno);
  static_cast<void>(opened.release());
  for (;;) {
    errno = 0;
    const dirent* entry = ::readdir(listing.get());
    if (entry == nullptr) break;
    const std::string_view name = static_cast<const char*>(entry->d_name);
    if (name != "." && name != "..") names.emplace_back(name);
  }
  if (errno != 0) throw FileError("list", folder.path(), errno);
  return names;
}

void moveFile(const Place& from, const Place& to) {
  if (::renameat2(from.folder(), from.name(), to.folder(), to.name(), RENAME_NOREPLACE) != 0) {
    throw FileError("move", from.path(), errno);
  }
  to.syncFolder();
}

}  // namespace brevanholt::platform
