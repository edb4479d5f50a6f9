#include "platform/files/MoveIntoPlace.h"

#include "platform/files/Files.h"
#include "platform/files/ItemCopy.h"
#include "platform/foundation/Log.h"
#include "platform/foundation/PlatformError.h"

#include <cerrno>
#include <cstdio>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace brevanholt::platform {
namespace {

namespace fs = std::filesystem;

// Another program may take each name just before it is used; this ends the loop.
constexpr int kMostTries = 100;

int errorOf(int outcome) {
  return outcome == 0 ? 0 : errno;
}

// For file systems that have neither RENAME_NOREPLACE nor second names. Another program may take
// the name between the two calls.
int probeThenRename(const fs::path& source, const fs::path& destination) {
  if (nameIsTaken(destination)) return EEXIST;
  return errorOf(::rename(source.c_str(), destination.c_str()));
}

// rename() onto a folder only takes an empty one, and this one was just made.
int renameOntoNewFolder(const fs::path& source, const fs::path& destination) {
  if (::mkdir(destination.c_str(), 0700) != 0) return errno;
  const int error = errorOf(::rename(source.c_str(), destination.c_str()));
  if (error != 0) ::rmdir(destination.c_str());
  return error;
}

// A second name, which fails where one is taken, and then the first name away.
int linkThenUnlink(const fs::path& source, const fs::path& destination) {
  if (::link(source.c_str(), destination.c_str()) != 0) {
    const bool hasNoLinks =
        errno == EPERM || errno == EOPNOTSUPP || errno == ENOSYS || errno == EMLINK;
    return hasNoLinks ? probeThenRename(source, destination) : errno;
  }
  const int error = errorOf(::unlink(source.c_str()));
  if (error != 0) ::unlink(destination.c_str());
  return error;
}

// Zero, or the error number.
int renameWithoutReplacing(const fs::path& source, const fs::path& destination) {
  const int error = errorOf(
      ::renameat2(AT_FDCWD, source.c_str(), AT_FDCWD, destination.c_str(), RENAME_NOREPLACE));
  if (error != EINVAL && error != ENOSYS) return error;
  const bool isFolder = fs::is_directory(fs::symlink_status(source));
  return isFolder ? renameOntoNewFolder(source, destination) : linkThenUnlink(source, destination);
}

[[noreturn]] void failToMove(const fs::path& source, const fs::path& destination, int error) {
  if (error == ENOENT && !nameIsTaken(source)) throw FileError("move the item", source, error);
  throw FileError("move the item to", destination, error);
}

struct Attempt {
  fs::path destination;
  int error = 0;
};

// Calls `take`, which returns an error number, with a chosen name, and again with another one while
// the name was taken in between.
template <class Take>
Attempt takeFreeName(const ChooseDestination& choose, Take take) {
  for (int tries = 1;; ++tries) {
    fs::path destination = choose();
    const int error = take(destination);
    if (error != EEXIST || tries == kMostTries) return {std::move(destination), error};
  }
}

// Renames to the first chosen name that is still free by then. Nothing for another file system.
std::optional<fs::path> renameToFreeName(const fs::path& source, const ChooseDestination& choose) {
  Attempt attempt = takeFreeName(choose, [&](const fs::path& destination) {
    return renameWithoutReplacing(source, destination);
  });
  if (attempt.error == EXDEV) return std::nullopt;
  if (attempt.error != 0) failToMove(source, attempt.destination, attempt.error);
  return std::move(attempt.destination);
}

void trySyncDirectory(const fs::path& folder) {
  try {
    syncDirectory(folder);
  } catch (const FileError& error) {
    logWarning("a moved item may not outlast a power cut: " + error.message());
  }
}

}  // namespace

fs::path makeInPlace(const ChooseDestination& choose, std::int64_t modified) {
  FileDescriptor file;
  Attempt attempt = takeFreeName(choose, [&](const fs::path& destination) {
    file =
        FileDescriptor(::open(destination.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
    return file ? 0 : errno;
  });
  if (attempt.error != 0) throw FileError("create the file", attempt.destination, attempt.error);
  if (!setModified(file.get(), modified)) {
    logWarning("a received file has no modification time: " + attempt.destination.string());
  }
  return std::move(attempt.destination);
}

std::optional<fs::path> renameIntoPlace(const fs::path& source, const ChooseDestination& choose) {
  return renameToFreeName(source, choose);
}

fs::path copyIntoPlace(const fs::path& source, const ChooseDestination& choose,
                       const std::stop_token& stop) {
  PartialCopy partial(choose().parent_path());
  partial.copy(source, stop);
  const auto destination = renameToFreeName(partial.path(), choose);
  if (!destination) throw FileError("move the item to", partial.path(), EXDEV);
  partial.release();
  trySyncDirectory(destination->parent_path());
  std::error_code error;
  fs::remove_all(source, error);
  if (error) {
    logWarning("an item was moved to " + destination->string() + ", but its source stays at " +
               source.string() + ": " + error.message());
  }
  return *destination;
}

}  // namespace brevanholt::platform
