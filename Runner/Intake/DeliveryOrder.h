#pragma once

#include "platform/channel/Value.h"
#include "platform/foundation/Lifetime.h"
#include "platform/foundation/MainQueue.h"

#include <stop_token>

namespace brevanholt {

// Delivers lists on the main thread in the order in which they were asked for, though some take
// long and are made on a queue of their own. What is at hand is delivered at once unless an earlier
// list is still being made. Nothing is delivered once this is gone, and its destruction stops the
// making.
class DeliveryOrder {
 public:
  using Make = platform::UniqueFunction<platform::List(const std::stop_token&)>;
  using Deliver = platform::UniqueFunction<void(platform::List)>;

  explicit DeliveryOrder(platform::MainQueue& mainQueue) : mainQueue_(mainQueue) {}
  ~DeliveryOrder() { stop_.request_stop(); }
  DeliveryOrder(const DeliveryOrder&) = delete;
  DeliveryOrder& operator=(const DeliveryOrder&) = delete;

  // `make` runs off the main thread, so it captures values only. It should end soon once a stop is
  // requested; what it returns then does not matter.
  void make(Make make, Deliver deliver);
  void add(platform::List list, Deliver deliver);

 private:
  platform::MainQueue& mainQueue_;
  int beingMade_ = 0;
  std::stop_source stop_;
  platform::DispatchQueue queue_{"brevanholt.walks", platform::QueuePriority::kUtility};
  platform::Lifetime lifetime_;
};

}  // namespace brevanholt
