#include "Shared/BrevanholtNativeShareStore.h"

#include "Shared/ShareManifest.h"
#include "platform/foundation/DirectoryHandle.h"
#include "platform/foundation/Files.h"
#include "platform/foundation/Log.h"
#include "platform/foundation/ResolvedPath.h"
#include "platform/foundation/Uuid.h"

#include <cerrno>
#include <set>
#include <utility>

namespace brevanholt {
namespace {

namespace fs = std::filesystem;
using platform::resolvedPath;

constexpr const char* kManifest = "share.json";
constexpr std::size_t kLargestManifest = std::size_t{16} << 20;

bool isShareFolder(const fs::path& resolved, const fs::path& inbox) {
  return resolved.parent_path() == inbox && platform::isUuid(resolved.filename().native());
}

// The path of something strictly inside `root`, below it; empty for anything else.
std::string_view pathInside(const fs::path& root, const fs::path& path) {
  const std::string& prefix = root.native();
  std::string_view rest = path.native();
  if (!rest.starts_with(prefix) || rest.substr(prefix.size(), 1) != "/") return {};
  rest.remove_prefix(prefix.size() + 1);
  return rest;
}

// The item as it may be handed on; nothing where it is to be dropped.
std::optional<BrevanholtNativeShareItem> checked(const fs::path& share,
                                                 BrevanholtNativeShareItem item) {
  if (!item.path) return item.text ? std::optional(std::move(item)) : std::nullopt;
  const auto resolved = resolvedPath(*item.path);
  if (!resolved || pathInside(share, *resolved).empty()) return std::nullopt;
  return BrevanholtNativeShareItem{.path = resolved->native(), .text = std::nullopt};
}

std::vector<fs::path> visibleEntries(const fs::path& folder) {
  std::vector<fs::path> entries;
  std::error_code error;
  for (fs::directory_iterator entry(folder, error), end; !error && entry != end;
       entry.increment(error)) {
    if (!entry->path().filename().native().starts_with('.')) entries.push_back(entry->path());
  }
  if (error) throw platform::FileError("read the folder", folder, error.value());
  return entries;
}

}  // namespace

fs::path BrevanholtNativeShareStore::inboxDirectory() const {
  if (downloads_.empty()) {
    throw StoreError("Brevanholt's Downloads staging area is unavailable.");
  }
  const fs::path inbox = downloads_ / ".NativeShareInbox";
  platform::createDirectories(inbox);
  const auto resolved = resolvedPath(inbox);
  if (!resolved) throw platform::FileError("find the folder", inbox, ELOOP);
  return *resolved;
}

BrevanholtNativeShareStore::Items BrevanholtNativeShareStore::consumeIdentifier(
    std::string_view identifier) const {
  if (!platform::isUuid(identifier)) throw StoreError("The native share identifier is invalid.");
  return consumeDirectory(inboxDirectory() / identifier);
}

BrevanholtNativeShareStore::Items BrevanholtNativeShareStore::consumeDirectory(
    const fs::path& directory) const {
  const auto share = resolvedPath(directory);
  if (!share || !isDirectChildOfInbox(*share)) {
    throw StoreError("The native share location is invalid.");
  }
  const platform::DirectoryHandle folder(*share);
  Items kept;
  for (auto& item : decodeManifest(folder.readFile(kManifest, kLargestManifest))) {
    if (auto item_ = checked(*share, std::move(item))) kept.push_back(std::move(*item_));
  }
  folder.removeFile(kManifest);
  return kept;
}

std::vector<BrevanholtNativeShareStore::Items> BrevanholtNativeShareStore::consumePending() const {
  std::vector<Items> shares;
  try {
    for (const fs::path& directory : visibleEntries(inboxDirectory())) {
      try {
        shares.push_back(consumeDirectory(directory));
      } catch (const std::exception& error) {
        platform::logWarning("Brevanholt could not import native share at " + directory.string() +
                             ": " + error.what());
      }
    }
  } catch (const std::exception& error) {
    platform::logWarning("Brevanholt could not read pending native shares: " +
                         std::string(error.what()));
    return {};
  }
  return shares;
}

bool BrevanholtNativeShareStore::isDirectChildOfInbox(const fs::path& directory) const {
  try {
    const auto resolved = resolvedPath(directory);
    return resolved && isShareFolder(*resolved, inboxDirectory());
  } catch (const platform::PlatformError&) {
    return false;
  }
}

void BrevanholtNativeShareStore::discardStagedItems(const std::vector<std::string>& paths) const {
  fs::path inbox;
  try {
    inbox = inboxDirectory();
  } catch (const platform::PlatformError& error) {
    return platform::logDebug(error.message());
  }
  std::set<fs::path> shares;
  for (const std::string& path : paths) {
    const auto resolved = resolvedPath(path);
    if (!resolved) continue;
    const std::string_view inside = pathInside(inbox, *resolved);
    const std::string_view identifier = inside.substr(0, inside.find('/'));
    if (platform::isUuid(identifier)) shares.insert(inbox / identifier);
  }
  for (const fs::path& share : shares) {
    // Removes a link as a link, at every depth, even one that takes a folder's place meanwhile.
    std::error_code error;
    fs::remove_all(share, error);
    if (error) platform::logDebug("a share stays at " + share.string() + ": " + error.message());
  }
}

}  // namespace brevanholt
