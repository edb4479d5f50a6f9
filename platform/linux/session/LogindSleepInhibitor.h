#pragma once

#include "platform/linux/bus/Bus.h"
#include "platform/linux/session/SleepInhibitor.h"

namespace brevanholt::platform {

// Inhibitors of logind's, each a file descriptor: one ends with its owner, or with the process.
class LogindSleepInhibitor final : public SleepInhibitor {
 public:
  explicit LogindSleepInhibitor(Bus& systemBus) : systemBus_(systemBus) {}
  [[nodiscard]] std::shared_ptr<void> inhibit(const std::string& reason) override;

 private:
  Bus& systemBus_;
  bool hasWarned_ = false;
  Lifetime lifetime_;
};

}  // namespace brevanholt::platform
