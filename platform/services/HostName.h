#pragma once

#include "platform/foundation/UniqueFunction.h"

#include <string>

namespace brevanholt::platform {

// What this computer is called.
class HostName {
 public:
  virtual ~HostName() = default;
  // The name that people gave it, else its network name. Answers at once when it is known.
  virtual void localizedName(UniqueFunction<void(std::string)> callback) = 0;
};

}  // namespace brevanholt::platform
