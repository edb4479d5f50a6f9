#include "platform/files/ItemCopy.h"

#include "platform/files/Files.h"
#include "platform/files/MoveIntoPlace.h"
#include "platform/foundation/Log.h"
#include "platform/foundation/PlatformError.h"
#include "platform/foundation/Uuid.h"

#include <cerrno>
#include <memory>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

namespace brevanholt::platform {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kCopyBuffer = 1 << 20;
// Written data is passed to the disk in steps of this size, so that the wait at the end is short.
constexpr off_t kWriteBack = 8 << 20;
constexpr std::string_view kPartialSuffix = ".partial";

void throwIfStopped(const std::stop_token& stop) {
  if (stop.stop_requested()) throw PlatformError("The copy was cancelled.");
}

void copyTimes(int descriptor, const struct stat& information) {
  const timespec times[] = {information.st_atim, information.st_mtim};
  ::futimens(descriptor, times);
  // Some file systems have no permissions.
  static_cast<void>(::fchmod(descriptor, information.st_mode & 0777));
}

// Starts writing a step to the disk, and waits for the one before it.
void writeBack(int descriptor, off_t step) {
  ::sync_file_range(descriptor, step, kWriteBack, SYNC_FILE_RANGE_WRITE);
  if (step >= kWriteBack) {
    ::sync_file_range(
        descriptor, step - kWriteBack, kWriteBack,
        SYNC_FILE_RANGE_WAIT_BEFORE | SYNC_FILE_RANGE_WRITE | SYNC_FILE_RANGE_WAIT_AFTER);
  }
}

void copyContents(const fs::path& source, int from, int to, const std::stop_token& stop) {
  const auto buffer = std::make_unique_for_overwrite<char[]>(kCopyBuffer);
  off_t written = 0;
  for (off_t step = 0;;) {
    throwIfStopped(stop);
    const ssize_t count = ::read(from, buffer.get(), kCopyBuffer);
    if (count == 0) return;
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) throw FileError("read", source, errno);
    writeAll(to, {buffer.get(), static_cast<std::size_t>(count)});
    written += count;
    for (; written - step >= kWriteBack; step += kWriteBack) writeBack(to, step);
  }
}

// A new item, locked as one that is in use. A search for leftovers may lock and remove it first;
// then it is created again.
template <class Create>
FileDescriptor lockedNew(Create create) {
  for (;;) {
    FileDescriptor item = create();
    if (!item && errno == ENOENT) continue;
    ::flock(item.get(), LOCK_EX);
    struct stat information {};
    if (::fstat(item.get(), &information) != 0 || information.st_nlink > 0) return item;
  }
}

FileDescriptor copyItem(const fs::path& source, const fs::path& copy, const std::stop_token& stop);

FileDescriptor copyFile(const fs::path& source, const fs::path& copy, const std::stop_token& stop) {
  const FileDescriptor from(::open(source.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  struct stat information {};
  if (!from || ::fstat(from.get(), &information) != 0) throw FileError("read", source, errno);
  FileDescriptor to = lockedNew([&copy] { return createFile(copy); });
  copyContents(source, from.get(), to.get(), stop);
  copyTimes(to.get(), information);
  throwIfStopped(stop);
  if (::fsync(to.get()) != 0) throw FileError("save the file", copy, errno);
  return to;
}

FileDescriptor copyFolder(const fs::path& source, const fs::path& copy,
                          const struct stat& information, const std::stop_token& stop) {
  FileDescriptor folder = lockedNew([&copy] {
    if (::mkdir(copy.c_str(), 0700) != 0) throw FileError("create the folder", copy, errno);
    return FileDescriptor(::open(copy.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  });
  std::error_code error;
  for (fs::directory_iterator entry(source, error); !error && entry != fs::directory_iterator();
       entry.increment(error)) {
    copyItem(entry->path(), copy / entry->path().filename(), stop);
  }
  if (error) throw FileError("list", source, error.value());
  copyTimes(folder.get(), information);
  if (::fsync(folder.get()) != 0) throw FileError("save the folder", copy, errno);
  return folder;
}

// The returned descriptor holds the copy's lock, where there can be one.
FileDescriptor copyItem(const fs::path& source, const fs::path& copy, const std::stop_token& stop) {
  struct stat information {};
  if (::lstat(source.c_str(), &information) != 0) throw FileError("move the item", source, errno);
  switch (information.st_mode & S_IFMT) {
    case S_IFREG:
      return copyFile(source, copy, stop);
    case S_IFDIR:
      return copyFolder(source, copy, information, stop);
    case S_IFLNK:
      fs::copy_symlink(source, copy);
      return {};
    case S_IFIFO:
      if (::mkfifo(copy.c_str(), information.st_mode & 0777) == 0) return {};
      throw FileError("create the pipe", copy, errno);
    default:
      throw FileError("copy", source, EOPNOTSUPP);
  }
}

bool isPartialName(const std::string& name) {
  return name.starts_with('.') && name.ends_with(kPartialSuffix) &&
         isUuid(std::string_view(name).substr(1, name.size() - 1 - kPartialSuffix.size()));
}

// The lock of a copy that was left behind; nothing for a copy in use, which is locked.
FileDescriptor lockOfAbandoned(const fs::path& partial) {
  struct stat information {};
  if (::lstat(partial.c_str(), &information) != 0 || information.st_uid != ::geteuid()) return {};
  FileDescriptor descriptor(
      ::open(partial.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
  if (!descriptor || ::flock(descriptor.get(), LOCK_EX | LOCK_NB) != 0) return {};
  return descriptor;
}

}  // namespace

PartialCopy::PartialCopy(const fs::path& folder)
    : path_(folder / ("." + makeUuid() + std::string(kPartialSuffix))) {}

PartialCopy::~PartialCopy() {
  std::error_code ignored;
  if (!isReleased_) fs::remove_all(path_, ignored);
}

void PartialCopy::copy(const fs::path& source, const std::stop_token& stop) {
  try {
    lock_ = copyItem(source, path_, stop);
    throwIfStopped(stop);
  } catch (const fs::filesystem_error& error) {
    throw FileError("copy", source, error.code().value());
  }
}

void removePartialCopies(const fs::path& folder, const std::stop_token& stop) {
  std::error_code error;
  fs::recursive_directory_iterator entry(folder, fs::directory_options::skip_permission_denied,
                                         error);
  for (; !error && entry != fs::recursive_directory_iterator() && !stop.stop_requested();
       entry.increment(error)) {
    if (!isPartialName(entry->path().filename().native())) continue;
    const FileDescriptor lock = lockOfAbandoned(entry->path());
    if (!lock) continue;
    entry.disable_recursion_pending();
    std::error_code failure;
    fs::remove_all(entry->path(), failure);
    logInfo((failure ? "an interrupted copy stays at " : "removed an interrupted copy at ") +
            entry->path().string());
  }
}

}  // namespace brevanholt::platform
