#include "Runner/AppDelegate/AppDelegate.h"
#include "Runner/MainFlutterWindow/MainFlutterWindow.h"

namespace brevanholt {

using platform::Value;

namespace {

// What is absent or no Boolean counts as false.
bool isTrue(const CallArguments& arguments, std::string_view key) {
  const auto* value = arguments.optional<bool>(key);
  return value != nullptr && *value;
}

}  // namespace

Value MainFlutterWindow::launchAtStartupEnabled(const CallArguments& /*arguments*/) {
  return delegate_ != nullptr && delegate_->launchAtStartupEnabled();
}

Value MainFlutterWindow::setLaunchAtStartup(const CallArguments& arguments) {
  const bool enabled = isTrue(arguments, "enabled");
  if (delegate_ != nullptr) delegate_->setLaunchAtStartup(enabled);
  return {};
}

Value MainFlutterWindow::updateDesktopShell(const CallArguments& arguments) {
  const platform::Map& state = arguments.map();
  if (delegate_ != nullptr) delegate_->updateDesktopStatus(state);
  return {};
}

Value MainFlutterWindow::setBackgroundMode(const CallArguments& arguments) {
  const bool enabled = isTrue(arguments, "enabled");
  const bool isTransferring = enabled && isTrue(arguments, "transferInProgress");
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
