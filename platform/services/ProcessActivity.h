#pragma once

#include <cstdint>
#include <memory>
#include <string>

namespace brevanholt::platform {

enum class ActivityOptions : std::uint32_t {
  kUserInitiatedAllowingIdleSystemSleep = 0x00EFFFFF,
  kUserInitiated = 0x00FFFFFF,  // also keeps the system from sleeping
};

// The declaration that the process does work the user asked for. Destroying it ends it.
class ProcessActivity {
 public:
  virtual ~ProcessActivity() = default;
};

class ProcessActivities {
 public:
  virtual ~ProcessActivities() = default;
  // `reason` is shown where the desktop lists what keeps it awake.
  [[nodiscard]] virtual std::unique_ptr<ProcessActivity> begin(ActivityOptions options,
                                                               const std::string& reason) = 0;
};

}  // namespace brevanholt::platform
