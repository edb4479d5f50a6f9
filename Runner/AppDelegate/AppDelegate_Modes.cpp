#include "Runner/AppDelegate/AppDelegate.h"
#include "Runner/MainFlutterWindow/MainFlutterWindow.h"

namespace brevanholt {

using platform::ActivationPolicy;
using platform::ActivityOptions;

void AppDelegate::showMainWindow() {
  availabilityActivity_.reset();
  services_.application.setActivationPolicy(ActivationPolicy::kRegular);
  services_.application.activate();
  if (const auto window = mainWindow()) window->window().makeKeyAndOrderFront();
}

void AppDelegate::hideToBackground() {
  if (const auto window = mainWindow()) window->window().orderOut();
  if (!availabilityActivity_) {
    availabilityActivity_ =
        services_.processActivities.begin(ActivityOptions::kUserInitiatedAllowingIdleSystemSleep,
                                          "Brevanholt background discovery and receiving");
  }
  services_.application.setActivationPolicy(ActivationPolicy::kAccessory);
  services_.application.deactivate();
}

}  // namespace brevanholt
