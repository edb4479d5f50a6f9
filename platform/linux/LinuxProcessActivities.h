#pragma once

#include "platform/foundation/ProcessActivity.h"
#include "platform/linux/Bus.h"

#include <functional>

namespace brevanholt::platform {

// Background work goes on in the engine's page, so every activity keeps the page running while it
// is hidden. One that must keep the system awake holds an inhibitor of logind's against sleep,
// which ends with the activity, or with the process.
class LinuxProcessActivities final : public ProcessActivities {
 public:
  LinuxProcessActivities(Bus& systemBus, std::function<void(bool)> setPageRunsWhileHidden);
  [[nodiscard]] std::unique_ptr<ProcessActivity> begin(ActivityOptions options,
                                                       const std::string& reason) override;

 private:
  // Closed where the activity ends before the answer comes.
  std::shared_ptr<FileDescriptor> inhibitSleep(const std::string& reason);

  Bus& systemBus_;
  std::function<void(bool)> setPageRunsWhileHidden_;
  std::weak_ptr<void> running_;
  bool hasWarned_ = false;
  Lifetime lifetime_;
};

}  // namespace brevanholt::platform
