#pragma once

#include "platform/foundation/DispatchQueue.h"
#include "platform/foundation/Lifetime.h"
#include "platform/foundation/MainQueue.h"

#include <filesystem>
#include <set>
#include <vector>

namespace brevanholt {

// Flushes folders, so that their new entries outlast a power cut, off the main thread. Requests
// that come while a flush runs share the next one. For the main thread.
class FolderSync {
 public:
  using Folders = std::set<std::filesystem::path>;

  explicit FolderSync(platform::MainQueue& mainQueue) : mainQueue_(mainQueue) {}

  // Calls `done` when these folders were flushed. A folder that cannot be flushed is logged and no
  // error: its files are in place, and a caller that tried again would place them twice.
  void afterSync(const Folders& folders, platform::UniqueFunction<void()> done);

 private:
  using Waiting = std::vector<platform::UniqueFunction<void()>>;

  void start();

  platform::MainQueue& mainQueue_;
  Folders folders_;
  Waiting waiting_;
  bool isSyncing_ = false;
  platform::DispatchQueue queue_{"brevanholt.folder-sync"};
  platform::Lifetime lifetime_;
};

}  // namespace brevanholt
