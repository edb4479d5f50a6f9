#include "platform/linux/session/LinuxProcessActivities.h"

#include <utility>

namespace brevanholt::platform {
namespace {

// Holds its share of what all running activities have in common, and what it alone needs.
class Activity final : public ProcessActivity {
 public:
  Activity(std::shared_ptr<void> running, std::shared_ptr<void> inhibitor)
      : running_(std::move(running)), inhibitor_(std::move(inhibitor)) {}

 private:
  std::shared_ptr<void> running_;
  std::shared_ptr<void> inhibitor_;
};

}  // namespace

LinuxProcessActivities::LinuxProcessActivities(SleepInhibitor& sleepInhibitor,
                                               std::function<void()> firstBegins)
    : sleepInhibitor_(sleepInhibitor), firstBegins_(std::move(firstBegins)) {}

std::unique_ptr<ProcessActivity> LinuxProcessActivities::begin(ActivityOptions options,
                                                               const std::string& reason) {
  std::shared_ptr<void> running = running_.lock();
  if (!running) {
    firstBegins_();
    running_ = running = std::make_shared<char>();
  }
  const bool keepsAwake = options == ActivityOptions::kUserInitiated;
  return std::make_unique<Activity>(std::move(running), keepsAwake ? keepAwake(reason) : nullptr);
}

std::shared_ptr<void> LinuxProcessActivities::keepAwake(const std::string& reason) {
  ++keepingAwake_;
  auto ended = lifetime_.bind([this] {
    if (--keepingAwake_ > 0 || !whenQuiet_) return;
    std::exchange(whenQuiet_, nullptr)();
  });
  return {nullptr, [inhibitor = sleepInhibitor_.inhibit(reason), ended](void*) mutable {
            inhibitor.reset();
            ended();
          }};
}

void LinuxProcessActivities::whenQuiet(std::function<void()> use) {
  if (keepingAwake_ == 0) return use();
  whenQuiet_ = std::move(use);
}

}  // namespace brevanholt::platform
