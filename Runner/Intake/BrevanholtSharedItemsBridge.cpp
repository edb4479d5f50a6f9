#include "Runner/Intake/BrevanholtSharedItemsBridge.h"

#include <utility>

namespace brevanholt {

BrevanholtSharedItemsBridge& BrevanholtSharedItemsBridge::shared() {
  static BrevanholtSharedItemsBridge bridge;
  return bridge;
}

void BrevanholtSharedItemsBridge::publish(Batch entries, Delivered delivered) {
  if (entries.empty()) return delivered();
  if (isReady()) return deliver(std::move(entries), std::move(delivered));
  pendingEntries_.emplace_back(std::move(entries), std::move(delivered));
}

void BrevanholtSharedItemsBridge::flushIfReady() {
  if (!isReady()) return;
  for (auto& [entries, delivered] : std::exchange(pendingEntries_, {})) {
    deliver(std::move(entries), std::move(delivered));
  }
}

void BrevanholtSharedItemsBridge::deliver(Batch entries, Delivered delivered) {
  channel_->invokeMethodUntilHandled("sharedEntries", std::move(entries), std::move(delivered));
}

}  // namespace brevanholt
