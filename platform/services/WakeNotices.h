#pragma once

#include "platform/foundation/Signal.h"

namespace brevanholt::platform {

// Tells when the computer comes back from sleep, and when its screens do. On the main thread.
class WakeNotices {
 public:
  virtual ~WakeNotices() = default;

  Signal systemDidWake;
  Signal screensDidWake;
};

}  // namespace brevanholt::platform
