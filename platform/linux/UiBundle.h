#pragma once

#include "platform/engine/UiEngine.h"
#include "platform/engine/web/EngineApplication.h"
#include "platform/foundation/MainQueue.h"
#include "platform/linux/storage/InstallLayout.h"
#include "platform/linux/window/LaunchOptions.h"

#include <filesystem>
#include <memory>

namespace brevanholt::platform {

// An engine, and what a page may ask of the program besides the host's methods. That is null for an
// engine whose UI is no page.
struct RunningUi {
  std::unique_ptr<UiEngine> engine;
  EngineApplication* page = nullptr;
};

// The user interface that is to run: what the command line names, or the installed one. What is in
// its folder decides which engine runs it.
class UiBundle {
 public:
  // Throws PlatformError, with what was looked for, where no engine can run the folder.
  UiBundle(const LaunchOptions& options, const InstallLayout& layout);

  // Throws PlatformError where the bundle is incomplete.
  [[nodiscard]] RunningUi makeEngine(const LaunchOptions& options, const InstallLayout& layout,
                                     MainQueue& mainQueue) const;

  // Where the bundle's packaged assets are, such as the logo; where it has none, the installed
  // ones.
  [[nodiscard]] const std::filesystem::path& privateFrameworks() const { return frameworks_; }

 private:
  std::filesystem::path folder_;
  std::filesystem::path frameworks_;
  bool isFlutter_ = false;
};

}  // namespace brevanholt::platform
