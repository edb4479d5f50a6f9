#pragma once

#include "platform/engine/web/BundleOrigin.h"

#include <webkit2/webkit2.h>

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace brevanholt::platform {

// Serves the UI bundle's files, and nothing else, under the engine's private URI scheme:
// brevanholt-ui://bundle/index.html. The headers of every answer keep the page from loading or
// reaching anything outside.
class BundleScheme {
 public:
  explicit BundleScheme(const std::filesystem::path& bundle);

  // Must outlive the context's pages.
  void registerIn(WebKitWebContext* context);

  // The bundle's file for a URI's path (percent-encoded, "/" for the index); nothing where that
  // would leave the bundle, also by a link.
  [[nodiscard]] std::optional<std::filesystem::path> fileFor(const std::string& uriPath) const;
  [[nodiscard]] static bool isInBundle(std::string_view uri) {
    return uri.starts_with(kBundleOrigin);
  }

 private:
  void serve(WebKitURISchemeRequest* request) const;

  std::filesystem::path bundle_;
};

}  // namespace brevanholt::platform
