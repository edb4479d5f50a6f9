#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>

namespace brevanholt::platform {

// Access to one item that the user handed over. Destroying it ends it.
class SecurityScope {
 public:
  virtual ~SecurityScope() = default;
};

struct ResolvedBookmark {
  std::filesystem::path location;
  bool isStale = false;  // the bookmark still works, but a fresh one should take its place
};

// Access to what lies outside of the program's own folders, and bookmarks that carry it over to
// later runs. Bookmarks are made and resolved on any thread, scopes are the main thread's.
class SecurityScopes {
 public:
  virtual ~SecurityScopes() = default;
  [[nodiscard]] virtual std::unique_ptr<SecurityScope> begin(
      const std::filesystem::path& location) = 0;
  // The bytes of a bookmark; nothing where there is no such item.
  [[nodiscard]] virtual std::optional<std::string> bookmark(
      const std::filesystem::path& location) const = 0;
  // Nothing where the bytes are no bookmark, or the item is gone.
  [[nodiscard]] virtual std::optional<ResolvedBookmark> resolve(
      const std::string& bookmark) const = 0;
};

}  // namespace brevanholt::platform
