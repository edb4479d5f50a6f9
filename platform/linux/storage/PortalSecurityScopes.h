#pragma once

#include "platform/linux/storage/PathSecurityScopes.h"

namespace brevanholt::platform {

// Access to what was picked in a sandbox. The file chooser's portal hands out paths below the
// folder of the document portal, and keeps the permission for later runs. A bookmark of such an
// item is the document's id and the path below it, so that it holds wherever that folder is; any
// other item, in Downloads say, is bookmarked by its path.
class PortalSecurityScopes final : public SecurityScopes {
 public:
  // `documents` is where the document portal's files are.
  explicit PortalSecurityScopes(std::filesystem::path documents)
      : documents_(std::move(documents)) {}

  [[nodiscard]] std::unique_ptr<SecurityScope> begin(
      const std::filesystem::path& location) override;
  [[nodiscard]] std::optional<std::string> bookmark(
      const std::filesystem::path& location) const override;
  [[nodiscard]] std::optional<ResolvedBookmark> resolve(const std::string& bookmark) const override;

 private:
  std::filesystem::path documents_;
  PathSecurityScopes paths_;
};

}  // namespace brevanholt::platform
