#pragma once

#include "platform/Services.h"
#include "platform/foundation/Lifetime.h"

#include <memory>

namespace brevanholt {

class MainFlutterWindow;

// Decides how the program appears: as a windowed application, or as a background agent that goes on
// serving nearby devices with its window hidden.
class AppDelegate final : public platform::ApplicationDelegate {
 public:
  explicit AppDelegate(const platform::Services& services) : services_(services) {}

  void setMainWindow(std::weak_ptr<MainFlutterWindow> window) { mainWindow_ = std::move(window); }
  [[nodiscard]] std::shared_ptr<MainFlutterWindow> mainWindow() const { return mainWindow_.lock(); }

  void applicationDidFinishLaunching() override;
  void applicationDidBecomeActive() override;
  bool applicationShouldHandleReopen(bool hasVisibleWindows) override;

  // Brings the application to the front as a windowed application.
  void showMainWindow();
  // Hides the window and turns into a background agent.
  void hideToBackground();

 private:
  platform::Services services_;
  std::weak_ptr<MainFlutterWindow> mainWindow_;
  std::unique_ptr<platform::ProcessActivity> availabilityActivity_;
  platform::Lifetime lifetime_;
};

}  // namespace brevanholt
