#pragma once

#include "platform/desktop/Application.h"
#include "platform/desktop/DragDestination.h"
#include "platform/desktop/Image.h"
#include "platform/desktop/OpenPanel.h"
#include "platform/desktop/Pasteboard.h"
#include "platform/desktop/Screen.h"
#include "platform/desktop/StatusItem.h"
#include "platform/desktop/Window.h"
#include "platform/desktop/Workspace.h"
#include "platform/engine/UiEngine.h"
#include "platform/foundation/DispatchQueue.h"
#include "platform/foundation/MainQueue.h"
#include "platform/services/BundleInfo.h"
#include "platform/services/HostName.h"
#include "platform/services/ImagePreviewer.h"
#include "platform/services/KnownFolders.h"
#include "platform/services/LoginItem.h"
#include "platform/services/NetworkMonitor.h"
#include "platform/services/NotificationCenter.h"
#include "platform/services/ProcessActivity.h"
#include "platform/services/SecurityScopes.h"
#include "platform/services/Thumbnailer.h"
#include "platform/services/UserDefaults.h"
#include "platform/services/WakeNotices.h"

namespace brevanholt::platform {

// Everything that needs the operating system, for the delegate and the window to borrow. All of it
// outlives them.
struct Services {
  Application& application;
  Window& mainWindow;
  UiEngine& engine;
  MainQueue& mainQueue;
  DispatchQueue& utilityQueue;
  DropContainer& dropContainer;
  OpenPanel& openPanel;
  Pasteboard& pasteboard;
  Workspace& workspace;
  HostName& hostName;
  StatusItem& statusItem;
  Images& images;
  Screen& screen;
  ImagePreviewer& imagePreviewer;
  Thumbnailer& thumbnailer;
  ProcessActivities& processActivities;
  SecurityScopes& securityScopes;
  UserDefaults& userDefaults;
  NotificationCenter& notificationCenter;
  LoginItem& loginItem;
  NetworkMonitor& networkMonitor;
  WakeNotices& wakeNotices;
  KnownFolders folders;
  BundleInfo bundleInfo;
  bool isLoginItemLaunch = false;
};

}  // namespace brevanholt::platform
