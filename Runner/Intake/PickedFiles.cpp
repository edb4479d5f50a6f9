#include "Runner/Intake/PickedFiles.h"

#include "platform/formats/Base64.h"
#include "platform/foundation/Log.h"
#include "platform/foundation/PlatformError.h"

#include <functional>
#include <set>

namespace brevanholt {

using platform::SecurityScopes;
using platform::UserDefaults;

namespace {

constexpr const char* kBookmarks = "pickedFileBookmarks";
constexpr const char* kQueueLabel = "org.brevanholt.Brevanholt.bookmarks";

// Reads or writes the bookmarks. A failure is logged: a pick succeeds without its bookmark.
void attempt(const std::function<void()>& upkeep) {
  try {
    upkeep();
  } catch (const platform::PlatformError& error) {
    platform::logWarning("the bookmarks of picked files are not kept: " + error.message());
  }
}

void addBookmarks(const SecurityScopes& scopes, UserDefaults& defaults,
                  const PickedFiles::Locations& locations) {
  attempt([&] {
    UserDefaults::StringDictionary bookmarks = defaults.stringDictionary(kBookmarks);
    for (const std::filesystem::path& location : locations) {
      if (const auto bookmark = scopes.bookmark(location)) {
        bookmarks[location.native()] = platform::toBase64(*bookmark);
      }
    }
    defaults.setStringDictionary(kBookmarks, bookmarks);
  });
}

// Calls `visit` with a path and with each folder that it lies in, as keys name them, until it
// returns false.
template <class Visit>
void forEachKeyOf(const std::string& path, Visit visit) {
  for (std::size_t end = path.size(); end != std::string::npos && visit(path.substr(0, end));
       end = end == 0 ? std::string::npos : path.rfind('/', end - 1)) {
  }
}

// The stored keys that are one of the paths, or a folder that one of them lies in.
std::set<std::string> matchingKeys(const UserDefaults::StringDictionary& bookmarks,
                                   const std::vector<std::string>& paths) {
  std::set<std::string> keys;
  for (const std::string& path : paths) {
    forEachKeyOf(path, [&](std::string key) {
      if (bookmarks.contains(key)) keys.insert(std::move(key));
      return true;
    });
  }
  return keys;
}

}  // namespace

PickedFiles::PickedFiles(SecurityScopes& scopes, UserDefaults& defaults)
    : scopes_(scopes),
      defaults_(defaults),
      bookmarkQueue_(kQueueLabel, platform::QueuePriority::kUtility) {}

void PickedFiles::keep(const Locations& locations) {
  open(locations);
  saveBrevanholtBookmarks(locations);
}

void PickedFiles::keepSoon(const Locations& locations) {
  open(locations);
  bookmarkQueue_.async([&scopes = scopes_, &defaults = defaults_, locations] {
    addBookmarks(scopes, defaults, locations);
  });
}

void PickedFiles::open(const Locations& locations) {
  for (const std::filesystem::path& location : locations) {
    securityScopedURLs_[location.native()] = scopes_.begin(location);
  }
}

std::optional<std::filesystem::path> PickedFiles::openItemOf(
    const std::filesystem::path& path) const {
  std::optional<std::filesystem::path> found;
  forEachKeyOf(path.native(), [&](const std::string& key) {
    if (securityScopedURLs_.contains(key)) found = key;
    return !found;
  });
  return found;
}

void PickedFiles::saveBrevanholtBookmarks(const Locations& locations) {
  bookmarkQueue_.sync([&] { addBookmarks(scopes_, defaults_, locations); });
}

UserDefaults::StringDictionary PickedFiles::storedBookmarks() {
  UserDefaults::StringDictionary bookmarks;
  bookmarkQueue_.sync(
      [&] { attempt([&] { bookmarks = defaults_.stringDictionary(kBookmarks); }); });
  return bookmarks;
}

void PickedFiles::restore(const std::vector<std::string>& paths) {
  const UserDefaults::StringDictionary bookmarks = storedBookmarks();
  for (const std::string& key : matchingKeys(bookmarks, paths)) {
    if (!securityScopedURLs_.contains(key)) restore(key, bookmarks.at(key));
  }
}

void PickedFiles::restore(const std::string& key, const std::string& bookmark) {
  const auto bytes = platform::fromBase64(bookmark);
  const auto resolved = bytes ? scopes_.resolve(*bytes) : std::nullopt;
  if (!resolved) return platform::logDebug("a bookmark leads nowhere: " + key);
  const std::shared_ptr<platform::SecurityScope> scope = scopes_.begin(resolved->location);
  securityScopedURLs_[key] = scope;
  if (!resolved->isStale) return;
  securityScopedURLs_[resolved->location.native()] = scope;
  saveBrevanholtBookmarks({resolved->location});
}

void PickedFiles::release(const std::vector<std::string>& paths) {
  std::set<std::string> keys;
  const auto forget = [&] {
    UserDefaults::StringDictionary bookmarks = defaults_.stringDictionary(kBookmarks);
    keys = matchingKeys(bookmarks, paths);
    for (const std::string& key : keys) bookmarks.erase(key);
    if (!keys.empty()) defaults_.setStringDictionary(kBookmarks, bookmarks);
  };
  bookmarkQueue_.sync([&] { attempt(forget); });
  for (const std::string& key : keys) securityScopedURLs_.erase(key);
}

}  // namespace brevanholt
