#pragma once

#include <string>

namespace brevanholt::platform {

// What this computer is called.
class HostName {
 public:
  virtual ~HostName() = default;
  // The name that people gave it, else its network name. Answers from what is known, at once.
  [[nodiscard]] virtual std::string localizedName() const = 0;
};

}  // namespace brevanholt::platform
