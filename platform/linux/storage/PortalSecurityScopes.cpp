#include "platform/linux/storage/PortalSecurityScopes.h"

#include <string_view>

namespace brevanholt::platform {
namespace {

constexpr std::string_view kPrefix = "document:";

}  // namespace

std::unique_ptr<SecurityScope> PortalSecurityScopes::begin(const std::filesystem::path& location) {
  return paths_.begin(location);
}

std::optional<std::string> PortalSecurityScopes::bookmark(
    const std::filesystem::path& location) const {
  auto path = paths_.bookmark(location);
  const std::string folder = documents_.native() + "/";
  if (!path || !path->starts_with(folder)) return path;
  return std::string(kPrefix) + path->substr(folder.size());
}

std::optional<ResolvedBookmark> PortalSecurityScopes::resolve(const std::string& bookmark) const {
  if (!bookmark.starts_with(kPrefix)) return paths_.resolve(bookmark);
  return paths_.resolve((documents_ / bookmark.substr(kPrefix.size())).native());
}

}  // namespace brevanholt::platform
