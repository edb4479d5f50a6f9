#pragma once

#include "platform/engine/web/BundleOrigin.h"
#include "platform/gtk/GLibPointers.h"

#include <webkit2/webkit2.h>

#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace brevanholt::platform {

// Serves the UI bundle's files, and nothing else, under the engine's private URI scheme:
// brevanholt-ui://bundle/index.html. The headers of every answer keep the page from loading or
// reaching anything outside. A bundle may be kept in memory, so that it stays whole when its files
// are replaced by those of another version while the program runs.
class BundleScheme {
 public:
  enum class Source { kFiles, kMemory };
  BundleScheme(const std::filesystem::path& bundle, Source source);

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
  void keep();
  [[nodiscard]] GObjectPointer<GInputStream> open(const std::filesystem::path& path,
                                                  GError** failure) const;

  std::filesystem::path bundle_;
  Source source_;
  std::map<std::filesystem::path, GBytesPointer> kept_;
};

}  // namespace brevanholt::platform
