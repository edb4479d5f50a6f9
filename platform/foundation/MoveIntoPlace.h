#pragma once

#include <filesystem>

namespace brevanholt::platform {

// The two halves of moving an item to a name that must be free. Neither ever replaces anything, and
// after any failure (a FileError; EEXIST when the name is taken) the source stands where it stood.

// Moves a file, folder or link within one file system, at once. False, and nothing done, when
// `source` and `destination` are on different ones.
[[nodiscard]] bool renameIntoPlace(const std::filesystem::path& source,
                                   const std::filesystem::path& destination);

// Moves a regular file to another file system. The data and the folder's entry are on the disk
// before the name appears and the source goes. Takes as long as copying takes.
void copyIntoPlace(const std::filesystem::path& source, const std::filesystem::path& destination);

}  // namespace brevanholt::platform
