#include "Shared/BrevanholtNativeShareStore.h"

#include "Shared/ShareManifest.h"
#include "platform/files/DirectoryHandle.h"
#include "platform/files/Files.h"
#include "platform/files/ResolvedPath.h"
#include "platform/foundation/Log.h"
#include "platform/foundation/Uuid.h"

#include <cerrno>
#include <set>
#include <utility>

namespace brevanholt {
namespace {

namespace fs = std::filesystem;
using platform::resolvedPath;

constexpr const char* kManifest = "share.json";
constexpr const char* kReceipts = ".Delivering";
constexpr const char* kBadLocation = "The native share location is invalid.";
constexpr std::size_t kUuidLength = 36;
constexpr std::size_t kLargestManifest = std::size_t{16} << 20;
// Bounds the time that the paths of one manifest take; a file takes one lookup, a folder's first
// file one more for each folder above it.
constexpr std::size_t kMostLookups = 100'000;

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

// The items that may be handed on: the texts, and what lies in the share.
BrevanholtNativeShareStore::Items checked(const fs::path& share,
                                          BrevanholtNativeShareStore::Items items) {
  platform::PathResolver resolver(kMostLookups);
  BrevanholtNativeShareStore::Items kept;
  for (auto& item : items) {
    if (item.path) {
      const auto resolved = resolver.resolve(*item.path);
      if (!resolved || pathInside(share, *resolved).empty()) continue;
      item = {.path = resolved->native(), .text = std::nullopt};
    }
    kept.push_back(std::move(item));
  }
  return kept;
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

// What `read` makes of each visible entry. What cannot be read is logged and left out.
template <class Read>
std::vector<BrevanholtNativeShareStore::Share> readAll(const fs::path& folder, Read read) {
  std::vector<BrevanholtNativeShareStore::Share> shares;
  for (const fs::path& entry : visibleEntries(folder)) {
    try {
      shares.push_back(read(entry));
    } catch (const std::exception& error) {
      platform::logWarning("Brevanholt could not import native share at " + entry.string() + ": " +
                           error.what());
    }
  }
  return shares;
}

// Takes the share in `directory`, with `inbox` as inboxDirectory() returns it.
BrevanholtNativeShareStore::Share take(const fs::path& directory, const fs::path& inbox) {
  const auto share = resolvedPath(directory);
  if (!share || !isShareFolder(*share, inbox)) throw StoreError(kBadLocation);
  const platform::DirectoryHandle folder(*share);
  auto items = checked(*share, decodeManifest(folder.readFile(kManifest, kLargestManifest)));
  const fs::path receipts = inbox / kReceipts;
  platform::createDirectories(receipts);
  // The same share may be written and taken again before it is delivered.
  const std::string receipt = share->filename().native() + '-' + platform::makeUuid();
  folder.moveFile(kManifest, platform::DirectoryHandle(receipts), receipt);
  return {.items = std::move(items), .receipt = receipts / receipt};
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

BrevanholtNativeShareStore::Share BrevanholtNativeShareStore::consumeIdentifier(
    std::string_view identifier) const {
  if (!platform::isUuid(identifier)) throw StoreError("The native share identifier is invalid.");
  const fs::path inbox = inboxDirectory();
  return take(inbox / identifier, inbox);
}

BrevanholtNativeShareStore::Share BrevanholtNativeShareStore::consumeDirectory(
    const fs::path& directory) const {
  if (!isDirectChildOfInbox(directory)) throw StoreError(kBadLocation);
  return take(directory, inboxDirectory());
}

std::vector<BrevanholtNativeShareStore::Share> BrevanholtNativeShareStore::consumePending() const {
  try {
    const fs::path inbox = inboxDirectory();
    return readAll(inbox, [&](const fs::path& share) { return take(share, inbox); });
  } catch (const std::exception& error) {
    platform::logWarning("Brevanholt could not read pending native shares: " +
                         std::string(error.what()));
    return {};
  }
}

std::vector<BrevanholtNativeShareStore::Share> BrevanholtNativeShareStore::undelivered() const {
  try {
    const fs::path inbox = inboxDirectory();
    const fs::path receipts = inbox / kReceipts;
    if (!platform::isDirectory(receipts)) return {};
    return readAll(receipts, [&](const fs::path& receipt) {
      const std::string name = receipt.filename();
      const std::string identifier = name.substr(0, kUuidLength);
      if (!platform::isUuid(identifier))
        throw StoreError("The native share identifier is invalid.");
      const platform::DirectoryHandle folder(receipts);
      Items items =
          checked(inbox / identifier, decodeManifest(folder.readFile(name, kLargestManifest)));
      return Share{.items = std::move(items), .receipt = receipt};
    });
  } catch (const std::exception& error) {
    platform::logWarning("Brevanholt could not read undelivered native shares: " +
                         std::string(error.what()));
    return {};
  }
}

void BrevanholtNativeShareStore::delivered(const Share& share) {
  std::error_code error;
  if (!share.receipt.empty()) fs::remove(share.receipt, error);
  if (!error) return;
  platform::logWarning("a share will be delivered again: " + share.receipt.string() + ": " +
                       error.message());
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
