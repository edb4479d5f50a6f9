#include "Runner/AppDelegate/AppDelegate.h"
#include "Runner/MainFlutterWindow/MainFlutterWindow.h"

namespace brevanholt {

using platform::Value;

Value MainFlutterWindow::launchAtStartupEnabled(const CallArguments& /*arguments*/) {
  return delegate_ != nullptr && delegate_->launchAtStartupEnabled();
}

Value MainFlutterWindow::setLaunchAtStartup(const CallArguments& arguments) {
  const bool enabled = arguments.isTrue("enabled");
  if (delegate_ != nullptr) delegate_->setLaunchAtStartup(enabled);
  return {};
}

Value MainFlutterWindow::updateDesktopShell(const CallArguments& arguments) {
  const platform::Map& state = arguments.map();
  if (delegate_ != nullptr) delegate_->updateDesktopStatus(state);
  return {};
}

Value MainFlutterWindow::setBackgroundMode(const CallArguments& arguments) {
  const bool enabled = arguments.isTrue("enabled");
  const bool isTransferring = enabled && arguments.isTrue("transferInProgress");
  if (delegate_ != nullptr) delegate_->setBackgroundAvailability(enabled);
  if (!isTransferring) {
    transferActivity_.reset();
  } else if (!transferActivity_) {
    transferActivity_ = services_.processActivities.begin(platform::ActivityOptions::kUserInitiated,
                                                          "Brevanholt file transfer");
  }
  return {};
}

}  // namespace brevanholt
