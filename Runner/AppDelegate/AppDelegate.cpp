#include "Runner/AppDelegate/AppDelegate.h"

#include "Runner/MainFlutterWindow/MainFlutterWindow.h"

namespace brevanholt {

void AppDelegate::applicationDidFinishLaunching() {
  configureDesktopStatusItem();
  services_.notificationCenter.setOpenHandler(lifetime_.bind([this] { showMainWindow(); }));
  if (services_.isLoginItemLaunch) {
    services_.mainQueue.post(lifetime_.bind([this] { hideToBackground(); }));
  } else if (const auto window = mainWindow()) {
    window->window().makeKeyAndOrderFront();
  }
}

void AppDelegate::applicationDidBecomeActive() {}

bool AppDelegate::applicationShouldHandleReopen(bool hasVisibleWindows) {
  if (!hasVisibleWindows) showMainWindow();
  return true;
}

}  // namespace brevanholt
