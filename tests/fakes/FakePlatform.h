#pragma once

#include "tests/fakes/FakeDesktop.h"
#include "tests/fakes/FakeMainQueue.h"
#include "tests/fakes/FakeServices.h"
#include "tests/fakes/FakeUserDefaults.h"
#include "tests/support/TemporaryFolder.h"

namespace brevanholt::platform {

// The whole platform in memory, but for its folders, which are real and temporary.
struct FakePlatform {
  [[nodiscard]] Services services() {
    return {.application = application,
            .mainWindow = window,
            .engine = engine,
            .mainQueue = mainQueue,
            .utilityQueue = utilityQueue,
            .dropContainer = dropContainer,
            .openPanel = openPanel,
            .pasteboard = desktop,
            .workspace = desktop,
            .hostName = desktop,
            .statusItem = statusItem,
            .images = desktop,
            .screen = desktop,
            .imagePreviewer = imagePreviewer,
            .thumbnailer = thumbnailer,
            .processActivities = processActivities,
            .securityScopes = securityScopes,
            .userDefaults = userDefaults,
            .notificationCenter = notificationCenter,
            .loginItem = loginItem,
            .networkMonitor = networkMonitor,
            .wakeNotices = wakeNotices,
            .folders = folders,
            .bundleInfo = bundleInfo,
            .isLoginItemLaunch = isLoginItemLaunch};
  }

  // Calls a method of "brevanholt/platform" and waits for the reply.
  Reply call(const std::string& method, Value arguments = {}) {
    const auto reply = engine.messenger.call("brevanholt/platform", method, std::move(arguments));
    if (!mainQueue.runUntil([&reply] { return reply->has_value(); })) {
      throw std::runtime_error(method + " was not answered");
    }
    return **reply;
  }

  TemporaryFolder home;
  FakeApplication application;
  FakeWindow window;
  FakeEngine engine;
  FakeMainQueue mainQueue;
  FakeDropContainer dropContainer;
  FakeOpenPanel openPanel;
  FakeStatusItem statusItem;
  FakeDesktop desktop;
  FakeImagePreviewer imagePreviewer;
  FakeThumbnailer thumbnailer;
  FakeProcessActivities processActivities;
  FakeSecurityScopes securityScopes;
  FakeUserDefaults userDefaults;
  FakeNotificationCenter notificationCenter;
  FakeLoginItem loginItem;
  FakeNetworkMonitor networkMonitor;
  WakeNotices wakeNotices;
  KnownFolders folders{.downloads = home / "Downloads",
                       .temporary = home / "tmp",
                       .caches = home / "cache",
                       .applicationSupport = home / "data",
                       .configuration = home / "config",
                       .workingDirectory = "/"};
  BundleInfo bundleInfo;
  bool isLoginItemLaunch = false;
  DispatchQueue utilityQueue{"utility", QueuePriority::kUtility};
};

inline Reply failure(const std::string& message) {
  return MethodError{"platform_error", message, {}};
}

}  // namespace brevanholt::platform
