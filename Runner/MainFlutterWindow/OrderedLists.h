#pragma once

#include "platform/channel/Value.h"
#include "platform/foundation/Lifetime.h"
#include "platform/foundation/MainQueue.h"

namespace brevanholt {

// Delivers lists on the main thread in the order in which they were asked for, though some take
// long and are made on the utility queue. What is at hand is delivered at once unless an earlier
// list is still being made. Nothing is delivered once this is gone.
class OrderedLists {
 public:
  using Make = platform::UniqueFunction<platform::List()>;
  using Deliver = platform::UniqueFunction<void(platform::List)>;

  OrderedLists(platform::MainQueue& mainQueue, platform::DispatchQueue& utilityQueue)
      : mainQueue_(mainQueue), utilityQueue_(utilityQueue) {}

  // `make` runs off the main thread, so it captures values only.
  void make(Make make, Deliver deliver);
  void add(platform::List list, Deliver deliver);

 private:
  platform::MainQueue& mainQueue_;
  platform::DispatchQueue& utilityQueue_;
  int beingMade_ = 0;
  platform::Lifetime lifetime_;
};

}  // namespace brevanholt
