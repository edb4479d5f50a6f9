#pragma once

#include "Runner/AppDelegate/DesktopStatusMenuController.h"
#include "Runner/MainFlutterWindow/BrevanholtSharedItemsBridge.h"
#include "Runner/MainFlutterWindow/OrderedLists.h"
#include "Runner/MainFlutterWindow/PickedFiles.h"
#include "Shared/BrevanholtNativeShareStore.h"
#include "platform/Services.h"
#include "platform/foundation/Lifetime.h"
#include "platform/foundation/Url.h"

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

  // Hands a share's items to the UI, in one batch. Shows no window.
  void publishNative(const BrevanholtNativeShareStore::Items& items);

 private:
  void configureDesktopStatusItem();
  [[nodiscard]] platform::Image desktopStatusIcon() const;
  void requestDiscoveryRecovery() const;

  void publishPendingShares(const std::vector<BrevanholtNativeShareStore::Items>& shares);
  // The items that the UI can be told of, with access to them opened.
  [[nodiscard]] BrevanholtNativeShareStore::Items keptItems(
      const BrevanholtNativeShareStore::Items& items);
  void openShareLink(const platform::Url& link);

  platform::Services services_;
  BrevanholtSharedItemsBridge& bridge_;
  BrevanholtNativeShareStore shareStore_;
  OrderedLists batches_;
  std::weak_ptr<MainFlutterWindow> mainWindow_;
  DesktopStatusMenuController statusMenuController_;
  std::unique_ptr<platform::ProcessActivity> availabilityActivity_;
  platform::Lifetime lifetime_;
};

}  // namespace brevanholt
