#pragma once

#include "platform/desktop/Workspace.h"
#include "platform/linux/session/SleepInhibitor.h"
#include "platform/linux/storage/InstallLayout.h"
#include "platform/services/LoginItem.h"
#include "platform/services/NotificationCenter.h"
#include "platform/services/SecurityScopes.h"

#include <functional>
#include <memory>

namespace brevanholt::platform {

class Bus;
class UserDefaults;

// The services that a sandbox reaches in another way than a program outside one.
struct DesktopAccess {
  std::unique_ptr<Workspace> workspace;
  std::unique_ptr<SecurityScopes> securityScopes;
  std::unique_ptr<SleepInhibitor> sleepInhibitor;
  std::unique_ptr<NotificationCenter> notificationCenter;
  std::unique_ptr<LoginItem> loginItem;
  // To be called before the program goes on without a window.
  std::function<void()> willRunHidden;
};

// What they are made of; each outlives them.
struct DesktopConnections {
  Bus& sessionBus;
  Bus& systemBus;
  UserDefaults& sessionState;  // ends with the user's session
  UserDefaults& portalState;   // lasts
  const InstallLayout& layout;
  std::function<void(const std::string& token)> activationTokenGiven;
};

// By portals in a Flatpak, by the desktop's own services elsewhere.
[[nodiscard]] DesktopAccess makeDesktopAccess(const DesktopConnections& connections);

}  // namespace brevanholt::platform
