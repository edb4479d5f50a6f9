#include "platform/linux/LinuxProcessActivities.h"

#include "platform/foundation/Log.h"

namespace brevanholt::platform {
namespace {

constexpr BusMethod kInhibit{"org.freedesktop.login1", "/org/freedesktop/login1",
                             "org.freedesktop.login1.Manager", "Inhibit"};

// Holds its share of what all running activities have in common, and what it alone needs.
class Activity final : public ProcessActivity {
 public:
  Activity(std::shared_ptr<void> running, std::shared_ptr<FileDescriptor> inhibitor)
      : running_(std::move(running)), inhibitor_(std::move(inhibitor)) {}

 private:
  std::shared_ptr<void> running_;
  std::shared_ptr<FileDescriptor> inhibitor_;
};

}  // namespace

LinuxProcessActivities::LinuxProcessActivities(Bus& systemBus,
                                               std::function<void(bool)> setPageRunsWhileHidden)
    : systemBus_(systemBus), setPageRunsWhileHidden_(std::move(setPageRunsWhileHidden)) {}

std::unique_ptr<ProcessActivity> LinuxProcessActivities::begin(ActivityOptions options,
                                                               const std::string& reason) {
  std::shared_ptr<void> running = running_.lock();
  if (!running) {
    setPageRunsWhileHidden_(true);
    running = std::shared_ptr<void>(this, [set = setPageRunsWhileHidden_](void*) { set(false); });
    running_ = running;
  }
  const bool keepsAwake = options == ActivityOptions::kUserInitiated;
  return std::make_unique<Activity>(std::move(running),
                                    keepsAwake ? inhibitSleep(reason) : nullptr);
}

std::shared_ptr<FileDescriptor> LinuxProcessActivities::inhibitSleep(const std::string& reason) {
  auto inhibitor = std::make_shared<FileDescriptor>();
  systemBus_.callForDescriptor(
      kInhibit, g_variant_new("(ssss)", "sleep", "Brevanholt", reason.c_str(), "block"),
      lifetime_.bind([this, weak = std::weak_ptr(inhibitor)](Result<FileDescriptor> answer) {
        if (answer.ok()) {
          if (const auto waiting = weak.lock()) *waiting = std::move(answer).value();
        } else if (!std::exchange(hasWarned_, true)) {
          logWarning("the system may sleep during a transfer: " + answer.error().message());
        }
      }));
  return inhibitor;
}

}  // namespace brevanholt::platform
