#pragma once

#include "platform/foundation/ProcessActivity.h"

#include <functional>

namespace brevanholt::platform {

// Background work goes on in the engine's page, so every activity keeps the page running while it
// is hidden.
class LinuxProcessActivities final : public ProcessActivities {
 public:
  explicit LinuxProcessActivities(std::function<void(bool)> setPageRunsWhileHidden);
  [[nodiscard]] std::unique_ptr<ProcessActivity> begin(ActivityOptions options,
                                                       const std::string& reason) override;

 private:
  std::function<void(bool)> setPageRunsWhileHidden_;
  std::weak_ptr<void> running_;
};

}  // namespace brevanholt::platform
