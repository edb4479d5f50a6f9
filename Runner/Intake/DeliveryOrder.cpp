#include "Runner/Intake/DeliveryOrder.h"

namespace brevanholt {

using platform::List;

void DeliveryOrder::make(Make make, Deliver deliver) {
  ++beingMade_;
  auto finish = lifetime_.bind([this, deliver = std::move(deliver)](List list) mutable {
    --beingMade_;
    deliver(std::move(list));
  });
  queue_.async([&mainQueue = mainQueue_, stop = stop_.get_token(), make = std::move(make),
                finish = std::move(finish)]() mutable {
    if (stop.stop_requested()) return;
    mainQueue.post(
        [list = make(stop), finish = std::move(finish)]() mutable { finish(std::move(list)); });
  });
}

void DeliveryOrder::add(List list, Deliver deliver) {
  if (beingMade_ == 0) return deliver(std::move(list));
  make([list = std::move(list)](const std::stop_token&) mutable { return std::move(list); },
       std::move(deliver));
}

}  // namespace brevanholt
