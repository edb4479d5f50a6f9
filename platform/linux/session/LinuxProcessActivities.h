#pragma once

#include "platform/foundation/Lifetime.h"
#include "platform/linux/session/SleepInhibitor.h"
#include "platform/services/ProcessActivity.h"

#include <functional>

namespace brevanholt::platform {

// Calls `firstBegins` whenever an activity begins while none runs: in a sandbox the desktop has to
// be asked before the program may run in the background. An activity that must keep the system
// awake holds an inhibitor against sleep, which ends with the activity.
class LinuxProcessActivities final : public ProcessActivities {
 public:
  LinuxProcessActivities(SleepInhibitor& sleepInhibitor, std::function<void()> firstBegins);
  [[nodiscard]] std::unique_ptr<ProcessActivity> begin(ActivityOptions options,
                                                       const std::string& reason) override;
  // Runs `use` once no activity that keeps the system awake runs, at once where none does. A later
  // one replaces it.
  void whenQuiet(std::function<void()> use);

 private:
  [[nodiscard]] std::shared_ptr<void> keepAwake(const std::string& reason);

  SleepInhibitor& sleepInhibitor_;
  std::function<void()> firstBegins_;
  std::weak_ptr<void> running_;
  int keepingAwake_ = 0;
  std::function<void()> whenQuiet_;
  Lifetime lifetime_;
};

}  // namespace brevanholt::platform
