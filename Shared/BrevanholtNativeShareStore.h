#pragma once

#include "platform/foundation/PlatformError.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace brevanholt {

// A staged file or folder where there is a path, else a shared text.
struct BrevanholtNativeShareItem {
  std::optional<std::string> path;  // absolute, without links
  std::optional<std::string> text;

  friend bool operator==(const BrevanholtNativeShareItem&,
                         const BrevanholtNativeShareItem&) = default;
};

class StoreError : public platform::PlatformError {
 public:
  using PlatformError::PlatformError;
};

// The inbox in which a companion program leaves what is to be shared: in the Downloads folder,
// ".NativeShareInbox/<UUID>/" holds the staged items and, written last, "share.json" that lists
// them.
//
// A share is taken once: its manifest is gone when it was read whole. Until the share is delivered,
// the manifest is kept as a receipt in the inbox's folder ".Delivering", so that a share that was
// taken by a run that ended before it could deliver it is found by the next run: undelivered(). The
// files stay until discardStagedItems() is told that nobody needs them any more.
//
// Every path is checked after links are resolved: an item outside its own folder is dropped.
// Nothing is kept between two operations, so a copy is as good as the original.
class BrevanholtNativeShareStore {
 public:
  using Items = std::vector<BrevanholtNativeShareItem>;

  // A share that was taken. Its receipt is what delivered() removes; empty for none.
  struct Share {
    Items items;
    std::filesystem::path receipt;
  };

  explicit BrevanholtNativeShareStore(std::filesystem::path downloads)
      : downloads_(std::move(downloads)) {}

  // The inbox, made if need be, with links resolved. Throws StoreError or FileError.
  [[nodiscard]] std::filesystem::path inboxDirectory() const;

  // Takes one share. Throws StoreError or FileError, and has then removed nothing.
  [[nodiscard]] Share consumeIdentifier(std::string_view identifier) const;
  [[nodiscard]] Share consumeDirectory(const std::filesystem::path& directory) const;
  // Takes every share that can be read. What cannot is logged and stays.
  [[nodiscard]] std::vector<Share> consumePending() const;

  // The shares that were taken and not delivered, by whichever run. For the start of a run.
  [[nodiscard]] std::vector<Share> undelivered() const;
  // The share has reached the UI.
  static void delivered(const Share& share);

  [[nodiscard]] bool isDirectChildOfInbox(const std::filesystem::path& directory) const;

  // Removes the shares to which these items belong, with all that was staged for them. Paths
  // elsewhere are ignored, and so is what cannot be removed. May take as long as deleting takes.
  void discardStagedItems(const std::vector<std::string>& paths) const;

 private:
  std::filesystem::path downloads_;
};

}  // namespace brevanholt
