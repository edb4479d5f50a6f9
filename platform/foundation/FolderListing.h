#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace brevanholt::platform {

struct FolderItem {
  enum class Kind { kDirectory, kFile };

  std::string relativePath;  // below the listed folder, its components joined by "/"
  Kind kind = Kind::kFile;
  std::uint64_t size = 0;  // bytes; 0 for a directory, and where it cannot be read
};

// The directories and regular files below a folder, at every depth, each directory right before
// what is in it, otherwise in the file system's order. What cannot be read is left out and ends
// nothing.
//
// Left out are hidden items (names that begin with a dot) with all that is in them, links and
// devices, names that are not UTF-8, what lies more than 400 folders deep, and what is in a folder
// that contains itself. The listed folder may be a link to one.
//
// There are no packages here: a folder whose name ends in ".app" is listed like any other, as every
// file manager of this system shows it. To leave out what is in it would lose the user's files.
[[nodiscard]] std::vector<FolderItem> listFolder(const std::filesystem::path& folder);

}  // namespace brevanholt::platform
