#pragma once

#include <filesystem>
#include <optional>

namespace brevanholt::platform {

// Where an absolute path leads: without links, "." and "..", and without a slash at the end. What
// does not exist is taken as named, so a dangling link leads to where it points. Nothing for a path
// that is relative, holds a NUL, or goes through more links than the system follows.
[[nodiscard]] std::optional<std::filesystem::path> resolvedPath(const std::filesystem::path& path);

}  // namespace brevanholt::platform
