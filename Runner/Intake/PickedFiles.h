#pragma once

#include "platform/foundation/DispatchQueue.h"
#include "platform/services/SecurityScopes.h"
#include "platform/services/UserDefaults.h"

#include <filesystem>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace brevanholt {

// What the user handed over to be sent, and may still be sent in a later run: access to it, open
// until it is released, and a bookmark of it in the user defaults ("pickedFileBookmarks", path to
// base64), there until it is released.
//
// The bookmarks are read and written on the bookmark queue alone, in the order of the calls. For
// the main thread. A bookmark that cannot be made, kept or resolved is skipped.
class PickedFiles {
 public:
  using Locations = std::vector<std::filesystem::path>;

  PickedFiles(platform::SecurityScopes& scopes, platform::UserDefaults& defaults);

  // Opens access to each location. It is bookmarked when this returns.
  void keep(const Locations& locations);
  // The same, but it is bookmarked soon after.
  void keepSoon(const Locations& locations);

  // The item that is open and that the path names or lies in. Nothing where there is none.
  [[nodiscard]] std::optional<std::filesystem::path> openItemOf(
      const std::filesystem::path& path) const;

  // Opens access again, as bookmarked, to what the paths are or lie in.
  void restore(const std::vector<std::string>& paths);
  // Ends access to what the paths are or lie in, and forgets it.
  void release(const std::vector<std::string>& paths);

 private:
  void open(const Locations& locations);
  void saveBrevanholtBookmarks(const Locations& locations);
  [[nodiscard]] platform::UserDefaults::StringDictionary storedBookmarks();
  void restore(const std::string& key, const std::string& bookmark);

  platform::SecurityScopes& scopes_;
  platform::UserDefaults& defaults_;
  // By the bookmark's key. The scope of a stale bookmark is here under its new path as well.
  std::map<std::string, std::shared_ptr<platform::SecurityScope>> securityScopedURLs_;
  platform::DispatchQueue bookmarkQueue_;
};

}  // namespace brevanholt
