#include "platform/linux/LinuxPlatform.h"

#include "platform/BuildInfo.h"

#include <glib.h>

#include <algorithm>
#include <thread>

namespace brevanholt::platform {
namespace {

WebEngineOptions engineOptions(const LaunchOptions& options, const InstallLayout& layout) {
  return {.uiBundle = options.uiBundle.empty() ? layout.uiBundle : options.uiBundle,
          .webExtensions = layout.webExtensions,
          .uiArguments = options.uiArguments,
          .developerTools = options.developerTools};
}

// The icon's own file: whatever draws notifications finds no theme of a build tree's.
std::string iconUri(const InstallLayout& layout) {
  const auto file = layout.icons / "hicolor/scalable/apps" / (std::string(kApplicationId) + ".svg");
  return GCharPointer(g_filename_to_uri(file.c_str(), nullptr, nullptr)).get();
}

// What ends with the user's session.
std::filesystem::path sessionStateFile() {
  return std::filesystem::path(g_get_user_runtime_dir()) / "brevanholt/session.ini";
}

std::filesystem::path autostartFolder() {
  return std::filesystem::path(g_get_user_config_dir()) / "autostart";
}

// Decoding takes a processor each, and up to 1 GiB.
std::size_t previewsAtOnce() {
  return std::clamp(std::thread::hardware_concurrency(), 1U, 4U);
}

}  // namespace

LinuxPlatform::LinuxPlatform(GtkApplicationHost& application, const LaunchOptions& options)
    : application_(application),
      isLoginItemLaunch_(options.isLoginItem),
      mainWindow_(application.gtk()),
      engine_(engineOptions(options, layout_), mainQueue_),
      openPanel_(mainWindow_.gtk()),
      images_(kApplicationId),
      statusItem_(sessionBus_, kApplicationId, layout_.icons,
                  [this](const std::string& token) { mainWindow_.setActivationToken(token); }),
      imagePreviewer_({.child = layout_.previewChild, .mostChildren = previewsAtOnce()}),
      thumbnailer_(sessionBus_, imagePreviewer_, {.cacheHome = g_get_user_cache_dir()}),
      processActivities_(systemBus_, [this](bool runs) { engine_.setRunsWhileHidden(runs); }),
      sessionState_(sessionStateFile()),
      notificationCenter_(
          sessionBus_, sessionState_, {.desktopEntry = kApplicationId, .icon = iconUri(layout_)},
          [this](const std::string& token) { mainWindow_.setActivationToken(token); }),
      loginItem_(autostartFolder(), kApplicationId, layout_.executable) {}

Services LinuxPlatform::services() {
  return {.application = application_,
          .mainWindow = mainWindow_,
          .engine = engine_,
          .mainQueue = mainQueue_,
          .utilityQueue = utilityQueue_,
          .dropContainer = dropContainer_,
          .openPanel = openPanel_,
          .pasteboard = pasteboard_,
          .workspace = workspace_,
          .hostName = hostName_,
          .statusItem = statusItem_,
          .images = images_,
          .screen = screens_,
          .imagePreviewer = imagePreviewer_,
          .thumbnailer = thumbnailer_,
          .processActivities = processActivities_,
          .securityScopes = securityScopes_,
          .userDefaults = userDefaults_,
          .notificationCenter = notificationCenter_,
          .loginItem = loginItem_,
          .networkMonitor = networkMonitor_,
          .wakeNotices = wakeNotices_,
          .folders = folders_,
          .bundleInfo = {.shortVersion = kBuildVersion,
                         .buildNumber = kBuildNumber,
                         .privateFrameworks = layout_.privateFrameworks},
          .isLoginItemLaunch = isLoginItemLaunch_};
}

}  // namespace brevanholt::platform
