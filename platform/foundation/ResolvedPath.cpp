#include "platform/foundation/ResolvedPath.h"

#include <system_error>
#include <vector>

namespace brevanholt::platform {
namespace {

namespace fs = std::filesystem;

constexpr int kMostLinks = 40;  // as path_resolution(7) has it

// The components still to walk, the next one last.
using Components = std::vector<fs::path>;

void pushComponents(Components& pending, const fs::path& path) {
  const fs::path relative = path.relative_path();
  const Components components(relative.begin(), relative.end());
  pending.insert(pending.end(), components.rbegin(), components.rend());
}

}  // namespace

std::optional<fs::path> resolvedPath(const fs::path& path) {
  if (!path.is_absolute() || path.native().find('\0') != std::string::npos) return std::nullopt;
  Components pending;
  pushComponents(pending, path);
  fs::path resolved = "/";
  int links = 0;
  while (!pending.empty()) {
    const fs::path component = std::move(pending.back());
    pending.pop_back();
    if (component.empty() || component == ".") continue;
    if (component == "..") {
      resolved = resolved.parent_path();
      continue;
    }
    std::error_code isNoLink;
    const fs::path target = fs::read_symlink(resolved / component, isNoLink);
    if (isNoLink) {
      resolved /= component;
      continue;
    }
    if (++links > kMostLinks) return std::nullopt;
    if (target.is_absolute()) resolved = "/";
    pushComponents(pending, target);
  }
  return resolved;
}

}  // namespace brevanholt::platform
