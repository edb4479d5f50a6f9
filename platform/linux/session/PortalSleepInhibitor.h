#pragma once

#include "platform/linux/bus/Bus.h"
#include "platform/linux/session/SleepInhibitor.h"

namespace brevanholt::platform {

// Inhibitors of org.freedesktop.portal.Inhibit. One lasts until its request is closed, or the
// program's connection to the bus ends.
class PortalSleepInhibitor final : public SleepInhibitor {
 public:
  explicit PortalSleepInhibitor(Bus& sessionBus) : sessionBus_(sessionBus) {}
  [[nodiscard]] std::shared_ptr<void> inhibit(const std::string& reason) override;

 private:
  Bus& sessionBus_;
  bool hasWarned_ = false;
  Lifetime lifetime_;
};

}  // namespace brevanholt::platform
