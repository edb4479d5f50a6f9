#include "platform/foundation/ReplaceFile.h"

#include "platform/foundation/Files.h"
#include "platform/foundation/PlatformError.h"
#include "platform/foundation/Uuid.h"

#include <cerrno>
#include <cstdio>

#include <unistd.h>

namespace brevanholt::platform {

void replaceFile(const std::filesystem::path& path, std::string_view content, mode_t mode) {
  const std::filesystem::path beside =
      path.parent_path() / ("." + path.filename().string() + "." + makeUuid());
  const FileDescriptor file = createFile(beside, mode);
  try {
    writeAll(file.get(), content);
    if (::fsync(file.get()) != 0) throw FileError("save", path, errno);
    if (::rename(beside.c_str(), path.c_str()) != 0) throw FileError("replace", path, errno);
  } catch (const SystemError& error) {
    ::unlink(beside.c_str());
    throw FileError("replace", path, error.errorNumber());
  }
  syncDirectory(path.parent_path());
}

bool isReplacementOf(std::string_view replaced, std::string_view name) {
  return name.size() > replaced.size() + 2 && name.starts_with('.') &&
         name.substr(1, replaced.size()) == replaced && name[replaced.size() + 1] == '.' &&
         isUuid(name.substr(replaced.size() + 2));
}

}  // namespace brevanholt::platform
