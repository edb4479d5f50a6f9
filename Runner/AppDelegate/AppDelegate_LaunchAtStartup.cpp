#include "Runner/AppDelegate/AppDelegate.h"

namespace brevanholt {

using Status = platform::LoginItem::Status;

bool AppDelegate::launchAtStartupEnabled() const {
  return services_.loginItem.status() == Status::kEnabled;
}

void AppDelegate::setLaunchAtStartup(bool enabled) {
  const Status status = services_.loginItem.status();
  if (enabled && status != Status::kEnabled) services_.loginItem.registerItem();
  if (!enabled && status != Status::kNotRegistered) services_.loginItem.unregisterItem();
}

}  // namespace brevanholt
