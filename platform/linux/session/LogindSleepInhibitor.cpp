#include "platform/linux/session/LogindSleepInhibitor.h"

#include "platform/foundation/Log.h"

namespace brevanholt::platform {
namespace {

constexpr BusMethod kInhibit{"org.freedesktop.login1", "/org/freedesktop/login1",
                             "org.freedesktop.login1.Manager", "Inhibit"};

}  // namespace

std::shared_ptr<void> LogindSleepInhibitor::inhibit(const std::string& reason) {
  auto inhibitor = std::make_shared<FileDescriptor>();
  systemBus_.callForDescriptor(
      kInhibit, g_variant_new("(ssss)", "sleep", "Brevanholt", reason.c_str(), "block"),
      // Closed where the inhibitor ended before the answer comes.
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
