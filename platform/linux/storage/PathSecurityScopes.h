#pragma once

#include "platform/services/SecurityScopes.h"

namespace brevanholt::platform {

// Paths as bookmarks. Nothing more is needed: without a sandbox a path is access enough, and in one
// the picker's portal hands out a path below the document folder that stays good for later runs.
class PathSecurityScopes final : public SecurityScopes {
 public:
  [[nodiscard]] std::unique_ptr<SecurityScope> begin(
      const std::filesystem::path& location) override;
  [[nodiscard]] std::optional<std::string> bookmark(
      const std::filesystem::path& location) const override;
  [[nodiscard]] std::optional<ResolvedBookmark> resolve(const std::string& bookmark) const override;

  [[nodiscard]] int openScopes() const { return *openScopes_; }

 private:
  std::shared_ptr<int> openScopes_ = std::make_shared<int>(0);
};

}  // namespace brevanholt::platform
