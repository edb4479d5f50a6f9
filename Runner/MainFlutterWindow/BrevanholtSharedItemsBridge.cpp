#include "Runner/MainFlutterWindow/BrevanholtSharedItemsBridge.h"

#include <utility>

namespace brevanholt {

BrevanholtSharedItemsBridge& BrevanholtSharedItemsBridge::shared() {
  static BrevanholtSharedItemsBridge bridge;
  return bridge;
}

void BrevanholtSharedItemsBridge::publish(Batch entries) {
  if (entries.empty()) return;
  if (isReady()) return deliver(std::move(entries));
  pendingEntries_.push_back(std::move(entries));
}

void BrevanholtSharedItemsBridge::flushIfReady() {
  if (!isReady()) return;
  for (Batch& entries : std::exchange(pendingEntries_, {})) deliver(std::move(entries));
}

void BrevanholtSharedItemsBridge::deliver(Batch entries) {
  channel_->invokeMethod("sharedEntries", std::move(entries));
}

}  // namespace brevanholt
