#pragma once

#include "platform/Services.h"
#include "platform/engine/web/WebEngine.h"
#include "platform/linux/AutostartLoginItem.h"
#include "platform/linux/Bus.h"
#include "platform/linux/ChildImagePreviewer.h"
#include "platform/linux/DBusWakeNotices.h"
#include "platform/linux/FreedesktopNotificationCenter.h"
#include "platform/linux/GLibMainQueue.h"
#include "platform/linux/GdkImages.h"
#include "platform/linux/GdkScreens.h"
#include "platform/linux/GioNetworkMonitor.h"
#include "platform/linux/GioWorkspace.h"
#include "platform/linux/GtkApplicationHost.h"
#include "platform/linux/GtkDropContainer.h"
#include "platform/linux/GtkMainWindow.h"
#include "platform/linux/GtkOpenPanel.h"
#include "platform/linux/GtkPasteboard.h"
#include "platform/linux/HostnamedHostName.h"
#include "platform/linux/InstallLayout.h"
#include "platform/linux/KeyFileUserDefaults.h"
#include "platform/linux/LaunchOptions.h"
#include "platform/linux/LinuxProcessActivities.h"
#include "platform/linux/LinuxStatusItem.h"
#include "platform/linux/PathSecurityScopes.h"
#include "platform/linux/TumblerThumbnailer.h"
#include "platform/linux/XdgFolders.h"

namespace brevanholt::platform {

// Every Linux service, built in the order in which they need each other.
class LinuxPlatform {
 public:
  LinuxPlatform(GtkApplicationHost& application, const LaunchOptions& options);

  [[nodiscard]] Services services();

 private:
  GtkApplicationHost& application_;
  InstallLayout layout_ = InstallLayout::ofThisProcess();
  bool isLoginItemLaunch_;
  KnownFolders folders_ = xdgFolders();
  Bus sessionBus_{G_BUS_TYPE_SESSION};
  Bus systemBus_{G_BUS_TYPE_SYSTEM};
  GLibMainQueue mainQueue_;
  GtkMainWindow mainWindow_;
  WebEngine engine_;
  GtkDropContainer dropContainer_{sessionBus_};
  GtkOpenPanel openPanel_;
  GtkPasteboard pasteboard_;
  GioWorkspace workspace_{sessionBus_};
  HostnamedHostName hostName_{systemBus_};
  GdkImages images_;
  LinuxStatusItem statusItem_;
  GdkScreens screens_;
  ChildImagePreviewer imagePreviewer_;
  TumblerThumbnailer thumbnailer_;
  LinuxProcessActivities processActivities_;
  PathSecurityScopes securityScopes_;
  KeyFileUserDefaults userDefaults_{folders_.configuration / "defaults.ini"};
  KeyFileUserDefaults sessionState_;
  FreedesktopNotificationCenter notificationCenter_;
  AutostartLoginItem loginItem_;
  GioNetworkMonitor networkMonitor_;
  DBusWakeNotices wakeNotices_{systemBus_, sessionBus_};
  DispatchQueue utilityQueue_{"brevanholt.utility", QueuePriority::kUtility};
};

}  // namespace brevanholt::platform
