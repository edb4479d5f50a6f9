#include "platform/linux/previews/PreviewSandbox.h"

#include "platform/foundation/Log.h"
#include "preview/Protocol.h"

#include <cstdlib>
#include <utility>

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
  if (isKnown()) return use();
  waiting_.push_back(std::move(use));
  if (!check_) findOut();
}

bool PreviewSandbox::isKnown() const {
  if (!isUsed_) return false;
  return *isUsed_ || std::chrono::steady_clock::now() - foundOut_ < retryAfter_;
}

PreviewSandbox::Command PreviewSandbox::command(const std::vector<std::string>& arguments) const {
  Command command = isUsed_.value_or(false) ? sandboxed() : Command{child_};
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
  const bool works = outcome.ok() && outcome.value().exitStatus == preview::kPreviewed;
  const bool isNews = std::exchange(isUsed_, works) != works;
  foundOut_ = std::chrono::steady_clock::now();
  if (!works && isNews) {
    logWarning("received images are decoded without a sandbox around the decoder: " +
               whyNot(outcome));
  }
  for (auto& use : std::exchange(waiting_, {})) use();
}

PreviewSandbox::Command PreviewSandbox::sandboxed() const {
  return isInFlatpak_ ? inFlatpak() : inBubblewrap();
}

// The child has no environment. What asks Flatpak for it is of the application or of the runtime,
// and needs the bus.
PreviewSandbox::Command PreviewSandbox::inFlatpak() const {
  const char* bus = std::getenv("DBUS_SESSION_BUS_ADDRESS");
  const std::string address = bus != nullptr ? bus : "";
  return {"/usr/bin/env",
          "PATH=/app/bin:/usr/bin",
          "DBUS_SESSION_BUS_ADDRESS=" + address,
          "flatpak-spawn",
          "--sandbox",
          "--no-network",
          "--watch-bus",
          "--directory=/",
          "--clear-env",
          child_};
}

PreviewSandbox::Command PreviewSandbox::inBubblewrap() const {
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
