#pragma once

#include "platform/linux/CollectedProcess.h"

#include <filesystem>
#include <memory>

namespace brevanholt::platform {

// How the child that decodes images is started: inside bubblewrap, where that works here, with
// nothing of the system but its libraries and fonts, and no network. Where it does not, the log
// says so once, and the child has only the confinement that it takes on itself.
class PreviewSandbox {
 public:
  using Command = std::vector<std::string>;

  PreviewSandbox(std::filesystem::path child, std::filesystem::path bubblewrap)
      : child_(std::move(child)), bubblewrap_(std::move(bubblewrap)) {}

  // Runs `use` as soon as it is known whether bubblewrap works. That is found out once, when it is
  // first asked for.
  void whenKnown(UniqueFunction<void()> use);
  // The child's command line. Only when that is known.
  [[nodiscard]] Command command(const std::vector<std::string>& arguments) const;

 private:
  void findOut();
  void found(const Result<CollectedProcess::Outcome>& outcome);
  [[nodiscard]] Command sandboxed() const;

  std::filesystem::path child_;
  std::filesystem::path bubblewrap_;
  std::optional<bool> isUsed_;
  std::unique_ptr<CollectedProcess> check_;
  std::vector<UniqueFunction<void()>> waiting_;
};

}  // namespace brevanholt::platform
