#pragma once

#include "platform/channel/MethodChannel.h"

#include <memory>
#include <utility>
#include <vector>

namespace brevanholt {

// The one place through which items from outside reach the UI. A batch goes out as it came, in one
// "sharedEntries" call: at once when the UI is ready and the channel is there, else when both are.
// From then on the channel's messenger sees to it that the UI gets it.
class BrevanholtSharedItemsBridge {
 public:
  using Batch = platform::List;  // of shared-entry maps
  using Delivered = platform::UniqueFunction<void()>;

  // The program's own. Others are for tests.
  static BrevanholtSharedItemsBridge& shared();

  // An empty batch is ignored. `delivered` is called when the UI has the batch, or has none to get.
  void publish(
      Batch entries, Delivered delivered = [] {});
  // Delivers what waits, oldest first, if it can be delivered.
  void flushIfReady();

  // Null to let go of the channel.
  void setChannel(std::shared_ptr<platform::MethodChannel> channel) {
    channel_ = std::move(channel);
  }
  [[nodiscard]] const platform::MethodChannel* channel() const { return channel_.get(); }
  // The UI listens; it never stops.
  void setDartReady() { dartReady_ = true; }

 private:
  [[nodiscard]] bool isReady() const { return dartReady_ && channel_; }
  void deliver(Batch entries, Delivered delivered);

  std::shared_ptr<platform::MethodChannel> channel_;
  std::vector<std::pair<Batch, Delivered>> pendingEntries_;
  bool dartReady_ = false;
};

}  // namespace brevanholt
