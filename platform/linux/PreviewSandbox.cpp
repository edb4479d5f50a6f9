#include "platform/linux/PreviewSandbox.h"

#include "platform/foundation/Log.h"
#include "preview/Protocol.h"

#include <fcntl.h>

namespace brevanholt::platform {
namespace {

using namespace std::chrono_literals;

constexpr const char* kChildInside = "/brevanholt-preview";
constexpr CollectedProcess::Limits kCheckLimits{.time = 10s, .output = 0};

std::string whyNot(const Result<CollectedProcess::Outcome>& outcome) {
  if (!outcome.ok()) return outcome.error().message();
  return "it ended with status " + std::to_string(outcome.value().exitStatus);
}

}  // namespace

void PreviewSandbox::whenKnown(UniqueFunction<void()> use) {
  if (isUsed_) return use();
  waiting_.push_back(std::move(use));
  if (!check_) findOut();
}

PreviewSandbox::Command PreviewSandbox::command(const std::vector<std::string>& arguments) const {
  Command command = *isUsed_ ? sandboxed() : Command{child_};
  command.insert(command.end(), arguments.begin(), arguments.end());
  return command;
}

void PreviewSandbox::findOut() {
  Command command = sandboxed();
  command.emplace_back("--check");
  try {
    check_ = std::make_unique<CollectedProcess>(
        command, FileDescriptor(::open("/dev/null", O_RDONLY | O_CLOEXEC)), kCheckLimits,
        [this](const Result<CollectedProcess::Outcome>& outcome) { found(outcome); });
  } catch (const PlatformError& error) {
    found(error);
  }
}

void PreviewSandbox::found(const Result<CollectedProcess::Outcome>& outcome) {
  check_.reset();
  isUsed_ = outcome.ok() && outcome.value().exitStatus == preview::kPreviewed;
  if (!*isUsed_) {
    logWarning("received images are decoded without bubblewrap: " + whyNot(outcome));
  }
  for (auto& use : std::exchange(waiting_, {})) use();
}

PreviewSandbox::Command PreviewSandbox::sandboxed() const {
  Command command{bubblewrap_,  "--unshare-all", "--die-with-parent", "--new-session",
                  "--cap-drop", "ALL",           "--chdir",           "/"};
  for (const char* needed :
       {"/usr", "/lib", "/lib64", "/etc/ld.so.cache", "/etc/fonts", "/var/cache/fontconfig"}) {
    command.insert(command.end(), {"--ro-bind-try", needed, needed});
  }
  command.insert(command.end(),
                 {"--ro-bind", child_, kChildInside, "--remount-ro", "/", "--", kChildInside});
  return command;
}

}  // namespace brevanholt::platform
