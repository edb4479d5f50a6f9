#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include <sys/types.h>

namespace brevanholt::platform {

// Puts a file with this content in the place of the one that may be there, once the new one is on
// the disk: after a power cut it is the old one or the new one. Throws FileError.
//
// The new one is written beside it under the name ".<name>.<UUID>", which is left behind where the
// process is killed meanwhile; isReplacementOf() recognises it.
void replaceFile(const std::filesystem::path& path, std::string_view content, mode_t mode = 0600);
// The same of a name in a folder that is open.
void replaceFile(int folder, const std::string& name, std::string_view content, mode_t mode = 0600);

// Whether `name` is one under which replaceFile() writes a file called `replaced`.
[[nodiscard]] bool isReplacementOf(std::string_view replaced, std::string_view name);

}  // namespace brevanholt::platform
