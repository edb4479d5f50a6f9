#include "platform/linux/LinuxPlatform.h"

#include "platform/BuildInfo.h"
#include "platform/files/Files.h"
#include "platform/linux/portal/Flatpak.h"

#include <glib.h>

#include <algorithm>
#include <cerrno>
#include <thread>

namespace brevanholt::platform {
namespace {

// Shares that are staged there are removed once nothing needs them any more.
constexpr const char* kShareInbox = ".NativeShareInbox";

// What ends with the user's session.
std::filesystem::path sessionStateFile() {
  return std::filesystem::path(g_get_user_runtime_dir()) / "brevanholt/session.ini";
}

std::string currentDesktop() {
  const char* names = g_getenv("XDG_CURRENT_DESKTOP");
  return names != nullptr ? names : "";
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
      uiBundle_(options, layout_),
      ui_(uiBundle_.makeEngine(options, layout_, mainQueue_)),
      openPanel_(mainWindow_.gtk(), userDefaults_),
      images_(kApplicationId),
      statusItem_(sessionBus_,
                  {.applicationIcon = kApplicationId,
                   .iconThemePath = layout_.icons,
                   .currentDesktop = currentDesktop(),
                   .ownPictures = layout_.privateFrameworks},
                  {.activationTokenGiven =
                       [this](const std::string& token) { mainWindow_.setActivationToken(token); },
                   .clicked = [this](std::uint32_t time) { mainWindow_.setClickTime(time); }}),
      imagePreviewer_({.child = layout_.previewChild,
                       .isInFlatpak = isInFlatpak(),
                       .mostChildren = previewsAtOnce()}),
      thumbnailer_(sessionBus_, imagePreviewer_, {.cacheHome = g_get_user_cache_dir()}),
      sessionState_(sessionStateFile()),
      desktop_(makeDesktopAccess(
          {.sessionBus = sessionBus_,
           .systemBus = systemBus_,
           .sessionState = sessionState_,
           .portalState = portalState_,
           .layout = layout_,
           .activationTokenGiven =
               [this](const std::string& token) { mainWindow_.setActivationToken(token); }})),
      processActivities_(*desktop_.sleepInhibitor, [this] { desktop_.willRunHidden(); }),
      updateNotice_(layout_.executable, mainWindow_.gtk(),
                    [this] { processActivities_.whenQuiet([this] { application_.restart(); }); }) {
  if (ui_.page != nullptr) {
    pageServices_.emplace(sessionBus_, PageServices::Access{.page = *ui_.page,
                                                            .application = application_,
                                                            .window = mainWindow_,
                                                            .dropContainer = dropContainer_,
                                                            .statusItem = statusItem_,
                                                            .workspace = *desktop_.workspace,
                                                            .help = layout_.help});
  }
  application_.setPastedPictures(folders_.downloads / kShareInbox);
  application_.setStartedAgainHandler([this] { updateNotice_.check(); });
}

Services LinuxPlatform::services() {
  return {.application = application_,
          .mainWindow = mainWindow_,
          .engine = *ui_.engine,
          .mainQueue = mainQueue_,
          .utilityQueue = utilityQueue_,
          .dropContainer = dropContainer_,
          .openPanel = openPanel_,
          .pasteboard = pasteboard_,
          .workspace = *desktop_.workspace,
          .hostName = hostName_,
          .statusItem = statusItem_,
          .images = images_,
          .screen = screens_,
          .imagePreviewer = imagePreviewer_,
          .thumbnailer = thumbnailer_,
          .processActivities = processActivities_,
          .securityScopes = *desktop_.securityScopes,
          .userDefaults = userDefaults_,
          .notificationCenter = *desktop_.notificationCenter,
          .loginItem = *desktop_.loginItem,
          .networkMonitor = networkMonitor_,
          .wakeNotices = wakeNotices_,
          .folders = folders_,
          .bundleInfo = {.shortVersion = kBuildVersion,
                         .buildNumber = kBuildNumber,
                         .privateFrameworks = uiBundle_.privateFrameworks()},
          .isLoginItemLaunch = isLoginItemLaunch_};
}

}  // namespace brevanholt::platform
