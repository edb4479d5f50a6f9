#pragma once

#include "platform/foundation/MainQueue.h"

namespace brevanholt::platform {

// The default main context.
class GLibMainQueue final : public MainQueue {
 public:
  void post(Task task) override;
};

}  // namespace brevanholt::platform
