#include "platform/linux/LinuxProcessActivities.h"

namespace brevanholt::platform {
namespace {

// Holds its share of what all running activities have in common.
class Activity final : public ProcessActivity {
 public:
  explicit Activity(std::shared_ptr<void> running) : running_(std::move(running)) {}

 private:
  std::shared_ptr<void> running_;
};

}  // namespace

LinuxProcessActivities::LinuxProcessActivities(std::function<void(bool)> setPageRunsWhileHidden)
    : setPageRunsWhileHidden_(std::move(setPageRunsWhileHidden)) {}

std::unique_ptr<ProcessActivity> LinuxProcessActivities::begin(ActivityOptions /*options*/,
                                                               const std::string& /*reason*/) {
  std::shared_ptr<void> running = running_.lock();
  if (!running) {
    setPageRunsWhileHidden_(true);
    running = std::shared_ptr<void>(this, [set = setPageRunsWhileHidden_](void*) { set(false); });
    running_ = running;
  }
  return std::make_unique<Activity>(std::move(running));
}

}  // namespace brevanholt::platform
