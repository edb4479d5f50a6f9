#pragma once

#include "platform/foundation/DispatchQueue.h"

namespace brevanholt::platform {

// The main thread's queue: where every reply and every event is sent from.
class MainQueue {
 public:
  virtual ~MainQueue() = default;
  // Runs `task` on the main thread, later and in order. Safe on any thread.
  virtual void post(Task task) = 0;
};

}  // namespace brevanholt::platform
