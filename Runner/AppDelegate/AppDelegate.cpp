#include "Runner/AppDelegate/AppDelegate.h"

#include "Runner/MainFlutterWindow/MainFlutterWindow.h"

namespace brevanholt {

AppDelegate::AppDelegate(const platform::Services& services, BrevanholtSharedItemsBridge& bridge)
    : services_(services),
      bridge_(bridge),
      shareStore_(services.folders.downloads),
      batches_(services.mainQueue) {}

void AppDelegate::applicationDidFinishLaunching() {
  configureDesktopStatusItem();
  services_.notificationCenter.setOpenHandler(lifetime_.bind([this] { showMainWindow(); }));
  publishShares(shareStore_.undelivered());
  publishShares(shareStore_.consumePending());
  if (services_.isLoginItemLaunch) {
    services_.mainQueue.post(lifetime_.bind([this] { hideToBackground(); }));
  } else if (const auto window = mainWindow()) {
    window->window().makeKeyAndOrderFront();
  }
}

void AppDelegate::applicationDidBecomeActive() {
  auto shares = shareStore_.consumePending();
  if (shares.empty()) return;
  publishShares(std::move(shares));
  showMainWindow();
}

bool AppDelegate::applicationShouldHandleReopen(bool hasVisibleWindows) {
  if (!hasVisibleWindows) showMainWindow();
  return true;
}

}  // namespace brevanholt
