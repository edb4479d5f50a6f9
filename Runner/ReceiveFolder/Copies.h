#pragma once

#include "platform/foundation/DispatchQueue.h"
#include "platform/foundation/Lifetime.h"
#include "platform/foundation/MainQueue.h"
#include "platform/foundation/Result.h"

#include <filesystem>
#include <set>
#include <stop_token>
#include <string>

namespace brevanholt {

// Moves that take long since they copy to another file system: one after another, in order, off the
// main thread. Destroying this cancels them; their sources stay. For the main thread.
class Copies {
 public:
  using Path = std::filesystem::path;
  using Placed = platform::UniqueFunction<void(platform::Result<Path>)>;

  explicit Copies(platform::MainQueue& mainQueue) : mainQueue_(mainQueue) {}
  ~Copies() { stop_.request_stop(); }
  Copies(const Copies&) = delete;
  Copies& operator=(const Copies&) = delete;

  // Moves an item into a folder under that name, or the next free one.
  void add(const Path& source, const Path& folder, const std::string& name, Placed done);
  // Whether an item is on its way into that folder under that name.
  [[nodiscard]] bool isPending(const Path& destination) const {
    return pending_.contains(destination);
  }
  // Runs `task` when everything added so far is done; at once where there is nothing.
  void afterPending(platform::UniqueFunction<void()> task);
  // Removes what copies left in and below a folder when their process was killed.
  void removeLeftovers(const Path& folder);

 private:
  platform::MainQueue& mainQueue_;
  std::multiset<Path> pending_;
  std::stop_source stop_;
  platform::DispatchQueue queue_{"brevanholt.copies", platform::QueuePriority::kUtility};
  platform::Lifetime lifetime_;
};

}  // namespace brevanholt
