#include "Runner/MainFlutterWindow/OrderedLists.h"

namespace brevanholt {

using platform::List;

void OrderedLists::make(Make make, Deliver deliver) {
  ++beingMade_;
  auto finish = lifetime_.bind([this, deliver = std::move(deliver)](List list) mutable {
    --beingMade_;
    deliver(std::move(list));
  });
  utilityQueue_.async(
      [&mainQueue = mainQueue_, make = std::move(make), finish = std::move(finish)]() mutable {
        mainQueue.post(
            [list = make(), finish = std::move(finish)]() mutable { finish(std::move(list)); });
      });
}

void OrderedLists::add(List list, Deliver deliver) {
  if (beingMade_ == 0) return deliver(std::move(list));
  make([list = std::move(list)]() mutable { return std::move(list); }, std::move(deliver));
}

}  // namespace brevanholt
