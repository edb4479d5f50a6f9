#pragma once

#include "platform/foundation/DispatchQueue.h"
#include "platform/foundation/Lifetime.h"
#include "platform/foundation/MainQueue.h"

#include <filesystem>
#include <set>
#include <vector>

namespace brevanholt {

// Waits for the disk to have folders' new entries, off the main thread. What is asked for while a
// sync runs shares the next one. For the main thread.
class FolderSync {
 public:
  using Folders = std::set<std::filesystem::path>;

  explicit FolderSync(platform::MainQueue& mainQueue) : mainQueue_(mainQueue) {}

  // Calls `done` when the entries made so far in these folders outlast a power cut. A folder that
  // cannot be synced is logged: its entries are there, and doing it all again would double them.
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
