#include "Runner/AppDelegate/AppDelegate.h"
#include "Runner/MainFlutterWindow/MainFlutterWindow.h"

namespace brevanholt {

using platform::ActivationPolicy;
using platform::ActivityOptions;

void AppDelegate::showMainWindow() {
  statusMenuController_.menu().cancelTracking();
  setBackgroundAvailability(false);
  services_.application.setActivationPolicy(ActivationPolicy::kRegular);
  services_.application.activate();
  if (const auto window = mainWindow()) window->window().makeKeyAndOrderFront();
  requestDiscoveryRecovery();
}

void AppDelegate::hideToBackground() {
  statusMenuController_.menu().cancelTracking();
  if (const auto window = mainWindow()) window->window().orderOut();
  setBackgroundAvailability(true);
  services_.application.setActivationPolicy(ActivationPolicy::kAccessory);
  services_.application.deactivate();
}

void AppDelegate::setBackgroundAvailability(bool enabled) {
  if (!enabled) return availabilityActivity_.reset();
  if (availabilityActivity_) return;
  availabilityActivity_ =
      services_.processActivities.begin(ActivityOptions::kUserInitiatedAllowingIdleSystemSleep,
                                        "Brevanholt background discovery and receiving");
}

void AppDelegate::requestDiscoveryRecovery() const {
  if (const auto window = mainWindow()) window->requestDiscoveryRecovery();
}

}  // namespace brevanholt
