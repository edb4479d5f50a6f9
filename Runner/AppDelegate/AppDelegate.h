#pragma once

#include "Runner/Intake/BrevanholtSharedItemsBridge.h"
#include "Runner/Intake/DeliveryOrder.h"
#include "Runner/Intake/PickedFiles.h"
#include "Runner/StatusMenu/DesktopStatusMenuController.h"
#include "Shared/BrevanholtNativeShareStore.h"
#include "platform/Services.h"
#include "platform/formats/Url.h"
#include "platform/foundation/Lifetime.h"

#include <memory>

namespace brevanholt {

class MainFlutterWindow;

// Decides how the program appears: as a windowed application, or as a background agent that goes on
// serving nearby devices with its window hidden.
class AppDelegate final : public platform::ApplicationDelegate {
 public:
  explicit AppDelegate(const platform::Services& services,
                       BrevanholtSharedItemsBridge& bridge = BrevanholtSharedItemsBridge::shared());

  void setMainWindow(std::weak_ptr<MainFlutterWindow> window) { mainWindow_ = std::move(window); }
  // Null where there is none, or it has gone.
  [[nodiscard]] std::shared_ptr<MainFlutterWindow> mainWindow() const { return mainWindow_.lock(); }

  void applicationDidFinishLaunching() override;
  void applicationDidBecomeActive() override;
  bool applicationShouldHandleReopen(bool hasVisibleWindows) override;
  void applicationOpen(const std::vector<std::string>& urls) override;
  void shareWithBrevanholt(const platform::ServicePasteboard& pasteboard) override;
  void chooseFilesToShare() override;

  // Brings the application to the front as a windowed application.
  void showMainWindow();
  // Hides the window and turns into a background agent.
  void hideToBackground();
  // Keeps discovery and receiving running while the window is hidden, or ends that.
  void setBackgroundAvailability(bool enabled);
  // Whether the session starts the application at login.
  [[nodiscard]] bool launchAtStartupEnabled() const;
  // Throws PlatformError where the system refuses.
  void setLaunchAtStartup(bool enabled);
  // Takes the shell's state, as the UI reports it, into the menu and the tooltip.
  void updateDesktopStatus(const platform::Map& state);

  // Hands a share's items to the UI, in one batch. Shows no window.
  void publishNative(const BrevanholtNativeShareStore::Items& items);

 private:
  void configureDesktopStatusItem();
  [[nodiscard]] platform::Image desktopStatusIcon() const;
  void requestDiscoveryRecovery() const;

  // Hands each share to the UI, in a batch of its own. Their bookmarks are written together.
  void publishShares(std::vector<BrevanholtNativeShareStore::Share> shares);
  // Opens access to the items, and leaves out those that the UI cannot be told of.
  void keepItems(std::vector<BrevanholtNativeShareStore::Share>& shares);
  void openShareLink(const platform::Url& link);

  platform::Services services_;
  BrevanholtSharedItemsBridge& bridge_;
  BrevanholtNativeShareStore shareStore_;
  DeliveryOrder batches_;
  std::weak_ptr<MainFlutterWindow> mainWindow_;
  DesktopStatusMenuController statusMenuController_;
  std::unique_ptr<platform::ProcessActivity> availabilityActivity_;
  platform::Lifetime lifetime_;
};

}  // namespace brevanholt
