#include "Runner/AppDelegate/AppDelegate.h"
#include "Runner/MainFlutterWindow/MainFlutterWindow.h"

namespace brevanholt {

using platform::ActivationPolicy;
using platform::ActivityOptions;

void AppDelegate::showMainWindow() {
  statusMenuController_.menu().cancelTracking();
  availabilityActivity_.reset();
  services_.application.setActivationPolicy(ActivationPolicy::kRegular);
  services_.application.activate();
  if (const auto window = mainWindow()) window->window().makeKeyAndOrderFront();
  requestDiscoveryRecovery();
}

void AppDelegate::hideToBackground() {
  statusMenuController_.menu().cancelTracking();
  if (const auto window = mainWindow()) window->window().orderOut();
  if (!availabilityActivity_) {
    availabilityActivity_ =
        services_.processActivities.begin(ActivityOptions::kUserInitiatedAllowingIdleSystemSleep,
                                          "Brevanholt background discovery and receiving");
  }
  services_.application.setActivationPolicy(ActivationPolicy::kAccessory);
  services_.application.deactivate();
}

void AppDelegate::requestDiscoveryRecovery() const {
  const auto window = mainWindow();
  if (window == nullptr || window->platformChannel() == nullptr) return;
  window->platformChannel()->invokeMethod("discoveryRecoveryRequested");
}

}  // namespace brevanholt
