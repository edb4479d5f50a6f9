#include "platform/linux/LinuxPlatform.h"

#include "platform/BuildInfo.h"

namespace brevanholt::platform {
namespace {

WebEngineOptions engineOptions(const LaunchOptions& options, const InstallLayout& layout) {
  return {.uiBundle = options.uiBundle.empty() ? layout.uiBundle : options.uiBundle,
          .webExtensions = layout.webExtensions,
          .uiArguments = options.uiArguments,
          .developerTools = options.developerTools};
}

}  // namespace

LinuxPlatform::LinuxPlatform(GtkApplicationHost& application, const LaunchOptions& options)
    : application_(application),
      isLoginItemLaunch_(options.isLoginItem),
      mainWindow_(application.gtk()),
      engine_(engineOptions(options, layout_), mainQueue_),
      images_(kApplicationId),
      statusItem_(sessionBus_, kApplicationId, layout_.icons,
                  [this](const std::string& token) { mainWindow_.setActivationToken(token); }),
      processActivities_([this](bool runs) { engine_.setRunsWhileHidden(runs); }) {}

Services LinuxPlatform::services() {
  return {.application = application_,
          .mainWindow = mainWindow_,
          .engine = engine_,
          .mainQueue = mainQueue_,
          .utilityQueue = utilityQueue_,
          .pasteboard = pasteboard_,
          .workspace = workspace_,
          .hostName = hostName_,
          .statusItem = statusItem_,
          .images = images_,
          .processActivities = processActivities_,
          .userDefaults = userDefaults_,
          .folders = folders_,
          .bundleInfo = {.shortVersion = kBuildVersion,
                         .buildNumber = kBuildNumber,
                         .privateFrameworks = layout_.privateFrameworks},
          .isLoginItemLaunch = isLoginItemLaunch_};
}

}  // namespace brevanholt::platform
