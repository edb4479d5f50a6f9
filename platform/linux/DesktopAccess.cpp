#include "platform/linux/DesktopAccess.h"

#include "platform/BuildInfo.h"
#include "platform/linux/notifications/FreedesktopNotificationCenter.h"
#include "platform/linux/notifications/PortalNotificationCenter.h"
#include "platform/linux/portal/Flatpak.h"
#include "platform/linux/session/AutostartLoginItem.h"
#include "platform/linux/session/LogindSleepInhibitor.h"
#include "platform/linux/session/PortalLoginItem.h"
#include "platform/linux/session/PortalSleepInhibitor.h"
#include "platform/linux/storage/PathSecurityScopes.h"
#include "platform/linux/storage/PortalSecurityScopes.h"
#include "platform/linux/window/GioWorkspace.h"
#include "platform/linux/window/PortalWorkspace.h"

#include <glib.h>

namespace brevanholt::platform {
namespace {

// The icon's own file: whatever draws notifications finds no theme of a build tree's.
std::string iconUri(const InstallLayout& layout) {
  const auto file = layout.icons / "hicolor/scalable/apps" / (std::string(kApplicationId) + ".svg");
  return GCharPointer(g_filename_to_uri(file.c_str(), nullptr, nullptr)).get();
}

std::filesystem::path autostartFolder() {
  return std::filesystem::path(g_get_user_config_dir()) / "autostart";
}

DesktopAccess portals(const DesktopConnections& connections) {
  Bus& bus = connections.sessionBus;
  auto loginItem = std::make_unique<PortalLoginItem>(
      bus, connections.portalState, std::vector<std::string>{"brevanholt", "--login-item"});
  PortalLoginItem* background = loginItem.get();
  return {.workspace = std::make_unique<PortalWorkspace>(bus),
          .securityScopes = std::make_unique<PortalSecurityScopes>(
              std::filesystem::path(g_get_user_runtime_dir()) / "doc"),
          .sleepInhibitor = std::make_unique<PortalSleepInhibitor>(bus),
          .notificationCenter =
              std::make_unique<PortalNotificationCenter>(bus, connections.activationTokenGiven),
          .loginItem = std::move(loginItem),
          .willRunHidden = [background] { background->askToRunInBackground(); }};
}

DesktopAccess ownServices(const DesktopConnections& connections) {
  Bus& bus = connections.sessionBus;
  const NotificationSender sender{.desktopEntry = kApplicationId,
                                  .icon = iconUri(connections.layout)};
  return {.workspace = std::make_unique<GioWorkspace>(bus),
          .securityScopes = std::make_unique<PathSecurityScopes>(),
          .sleepInhibitor = std::make_unique<LogindSleepInhibitor>(connections.systemBus),
          .notificationCenter = std::make_unique<FreedesktopNotificationCenter>(
              bus, connections.sessionState, sender, connections.activationTokenGiven),
          .loginItem = std::make_unique<AutostartLoginItem>(autostartFolder(), kApplicationId,
                                                            connections.layout.executable),
          .willRunHidden = [] {}};
}

}  // namespace

DesktopAccess makeDesktopAccess(const DesktopConnections& connections) {
  return isInFlatpak() ? portals(connections) : ownServices(connections);
}

}  // namespace brevanholt::platform
