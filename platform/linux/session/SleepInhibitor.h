#pragma once

#include <memory>
#include <string>

namespace brevanholt::platform {

// What keeps the system from going to sleep.
class SleepInhibitor {
 public:
  virtual ~SleepInhibitor() = default;
  // The system stays awake until what is returned is destroyed. Where that cannot be had, the log
  // says so once.
  [[nodiscard]] virtual std::shared_ptr<void> inhibit(const std::string& reason) = 0;
};

}  // namespace brevanholt::platform
