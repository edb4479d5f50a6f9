#include "platform/files/ReplaceFile.h"

#include "platform/files/Files.h"
#include "platform/foundation/PlatformError.h"
#include "platform/foundation/Uuid.h"

#include <cerrno>
#include <cstdio>

#include <fcntl.h>
#include <unistd.h>

namespace brevanholt::platform {

void replaceFile(const std::filesystem::path& path, std::string_view content, mode_t mode) {
  const FileDescriptor folder(::open(path.parent_path().c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
  if (!folder) throw FileError("replace", path, errno);
  replaceFile(folder.get(), path.filename(), content, mode);
}

void replaceFile(int folder, const std::string& name, std::string_view content, mode_t mode) {
  const std::string beside = "." + name + "." + makeUuid();
  const FileDescriptor file(
      ::openat(folder, beside.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, mode));
  if (!file) throw FileError("replace", name, errno);
  try {
    writeAll(file.get(), content);
    if (::fsync(file.get()) != 0 || ::renameat(folder, beside.c_str(), folder, name.c_str()) != 0) {
      throw SystemError("replace", errno);
    }
  } catch (const SystemError& error) {
    ::unlinkat(folder, beside.c_str(), 0);
    throw FileError("replace", name, error.errorNumber());
  }
  const FileDescriptor readable(::openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (!readable || ::fsync(readable.get()) != 0) throw FileError("save the folder of", name, errno);
}

bool isReplacementOf(std::string_view replaced, std::string_view name) {
  return name.size() > replaced.size() + 2 && name.starts_with('.') &&
         name.substr(1, replaced.size()) == replaced && name[replaced.size() + 1] == '.' &&
         isUuid(name.substr(replaced.size() + 2));
}

}  // namespace brevanholt::platform
