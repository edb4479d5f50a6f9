#pragma once

#include "Runner/AppDelegate/DesktopStatusMenuController.h"
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
  // Null where there is none, or it has gone.
  [[nodiscard]] std::shared_ptr<MainFlutterWindow> mainWindow() const { return mainWindow_.lock(); }

  void applicationDidFinishLaunching() override;
  void applicationDidBecomeActive() override;
  bool applicationShouldHandleReopen(bool hasVisibleWindows) override;

  // Brings the application to the front as a windowed application.
  void showMainWindow();
  // Hides the window and turns into a background agent.
  void hideToBackground();
  // Keeps discovery and receiving going while nobody looks at the application, or lets that rest.
  void setBackgroundAvailability(bool enabled);
  // Whether the session starts the application at login.
  [[nodiscard]] bool launchAtStartupEnabled() const;
  // Throws PlatformError where the system refuses.
  void setLaunchAtStartup(bool enabled);
  // Takes the shell's state, as the UI reports it, into the menu and the tooltip.
  void updateDesktopStatus(const platform::Map& state);

 private:
  void configureDesktopStatusItem();
  [[nodiscard]] platform::Image desktopStatusIcon() const;
  void requestDiscoveryRecovery() const;

  platform::Services services_;
  std::weak_ptr<MainFlutterWindow> mainWindow_;
  DesktopStatusMenuController statusMenuController_;
  std::unique_ptr<platform::ProcessActivity> availabilityActivity_;
  platform::Lifetime lifetime_;
};

}  // namespace brevanholt
