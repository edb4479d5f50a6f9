#pragma once

#include <cstdint>
#include <filesystem>
#include <stop_token>
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
// what is in it, otherwise in the file system's order. Entries that cannot be read are left out.
//
// Left out are hidden items (names that begin with a dot) with all that is in them, what is in a
// package, links and devices, names that are not UTF-8, what lies more than 400 folders deep, and
// what is in a folder that contains itself. The listed folder may be a link to one, or a package.
//
// A package is a folder that counts as one item: one with such a name as "Notes.app" and with a
// folder "Contents" in it. The log counts what was left out, except hidden items.
//
// Ends early, with what it has, when a stop is requested.
[[nodiscard]] std::vector<FolderItem> listFolder(const std::filesystem::path& folder,
                                                 const std::stop_token& stop = {});

}  // namespace brevanholt::platform
