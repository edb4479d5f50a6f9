#pragma once

#include "platform/linux/previews/CollectedProcess.h"

#include <filesystem>
#include <memory>

namespace brevanholt::platform {

// How the child that decodes images is started: inside bubblewrap, where that works here, with
// nothing of the system but its libraries and fonts, and no network. In a Flatpak, where bubblewrap
// cannot work, Flatpak starts it in a sandbox of its own that has no permission. Where neither
// works, the log says so, and the child has only the confinement that it takes on itself. It is
// tried again after a while, since it may have failed for want of memory or processes.
class PreviewSandbox {
 public:
  using Command = std::vector<std::string>;

  PreviewSandbox(std::filesystem::path child, std::filesystem::path bubblewrap, bool isInFlatpak,
                 std::chrono::milliseconds retryAfter)
      : child_(std::move(child)),
        bubblewrap_(std::move(bubblewrap)),
        isInFlatpak_(isInFlatpak),
        retryAfter_(retryAfter) {}

  // Runs `use` as soon as it is known whether the sandbox works. That is found out when it is first
  // asked for, and again some time after it failed.
  void whenKnown(UniqueFunction<void()> use);
  // The child's command line. Only when that is known.
  [[nodiscard]] Command command(const std::vector<std::string>& arguments) const;

 private:
  [[nodiscard]] bool isKnown() const;
  void findOut();
  void found(const Result<CollectedProcess::Outcome>& outcome);
  [[nodiscard]] Command sandboxed() const;
  [[nodiscard]] Command inBubblewrap() const;
  [[nodiscard]] Command inFlatpak() const;

  std::filesystem::path child_;
  std::filesystem::path bubblewrap_;
  bool isInFlatpak_;
  std::chrono::milliseconds retryAfter_;
  std::optional<bool> isUsed_;
  std::chrono::steady_clock::time_point foundOut_;
  std::unique_ptr<CollectedProcess> check_;
  std::vector<UniqueFunction<void()>> waiting_;
};

}  // namespace brevanholt::platform
