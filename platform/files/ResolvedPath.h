#pragma once

#include "platform/files/FileDescriptor.h"

#include <cstddef>
#include <filesystem>
#include <limits>
#include <optional>
#include <string>
#include <string_view>

namespace brevanholt::platform {

// Where an absolute path leads: without links, "." and "..", and without a slash at the end. What
// does not exist is taken as named, so a dangling link leads to where it points. Nothing for a path
// that is relative, holds a NUL, is longer than the system takes (PATH_MAX), or goes through more
// links than the system follows.
[[nodiscard]] std::optional<std::filesystem::path> resolvedPath(const std::filesystem::path& path);

// Resolves many paths with a bounded number of system calls. Paths in the folder of the path before
// take one call each.
class PathResolver {
 public:
  explicit PathResolver(std::size_t mostLookups = std::numeric_limits<std::size_t>::max())
      : lookupsLeft_(mostLookups) {}

  // As resolvedPath(). Throws PlatformError when the lookups are used up.
  [[nodiscard]] std::optional<std::filesystem::path> resolve(const std::string& path);

 private:
  // A folder, with no links on the way to it. The descriptor is of the folder above the last
  // `missing` components, which do not exist or are in no folder.
  struct Place {
    FileDescriptor folder;
    std::string path;  // empty for "/"
    std::size_t missing = 0;
    int linksLeft = 0;
  };

  [[nodiscard]] static Place root();
  // Each returns false where there are too many links.
  [[nodiscard]] bool walk(Place& place, std::string_view path);
  [[nodiscard]] bool descend(Place& place, const std::string& name);
  [[nodiscard]] bool follow(Place& place, const std::string& target);
  static void ascend(Place& place);
  [[nodiscard]] std::optional<std::string> linkAt(const Place& place, const std::string& name);
  void countLookup();

  std::size_t lookupsLeft_;
  std::string lastFolder_;  // as it was named
  std::optional<Place> lastPlace_;
};

}  // namespace brevanholt::platform
