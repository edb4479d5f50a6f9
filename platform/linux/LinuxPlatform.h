#pragma once

#include "platform/Services.h"
#include "platform/gtk/GLibMainQueue.h"
#include "platform/linux/DesktopAccess.h"
#include "platform/linux/PageServices.h"
#include "platform/linux/UiBundle.h"
#include "platform/linux/bus/Bus.h"
#include "platform/linux/previews/ChildImagePreviewer.h"
#include "platform/linux/previews/TumblerThumbnailer.h"
#include "platform/linux/session/DBusWakeNotices.h"
#include "platform/linux/session/GioNetworkMonitor.h"
#include "platform/linux/session/HostnamedHostName.h"
#include "platform/linux/session/LinuxProcessActivities.h"
#include "platform/linux/storage/InstallLayout.h"
#include "platform/linux/storage/InstanceLock.h"
#include "platform/linux/storage/KeyFileUserDefaults.h"
#include "platform/linux/storage/XdgFolders.h"
#include "platform/linux/tray/GdkImages.h"
#include "platform/linux/tray/LinuxStatusItem.h"
#include "platform/linux/window/GdkScreens.h"
#include "platform/linux/window/GtkApplicationHost.h"
#include "platform/linux/window/GtkDropContainer.h"
#include "platform/linux/window/GtkMainWindow.h"
#include "platform/linux/window/GtkOpenPanel.h"
#include "platform/linux/window/GtkPasteboard.h"
#include "platform/linux/window/LaunchOptions.h"
#include "platform/linux/window/UpdateNotice.h"

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
  InstanceLock instanceLock_{folders_.configuration};
  KeyFileUserDefaults userDefaults_{folders_.configuration / "defaults.ini"};
  Bus sessionBus_{G_BUS_TYPE_SESSION};
  Bus systemBus_{G_BUS_TYPE_SYSTEM};
  GLibMainQueue mainQueue_;
  GtkMainWindow mainWindow_;
  GtkDropContainer dropContainer_{sessionBus_};
  UiBundle uiBundle_;
  RunningUi ui_;  // ends before what its view is in
  GtkOpenPanel openPanel_;
  GtkPasteboard pasteboard_;
  HostnamedHostName hostName_{systemBus_};
  GdkImages images_;
  LinuxStatusItem statusItem_;
  GdkScreens screens_;
  ChildImagePreviewer imagePreviewer_;
  TumblerThumbnailer thumbnailer_;
  KeyFileUserDefaults sessionState_;
  KeyFileUserDefaults portalState_{folders_.configuration / "portal.ini"};
  DesktopAccess desktop_;
  LinuxProcessActivities processActivities_;
  std::optional<PageServices> pageServices_;
  UpdateNotice updateNotice_;
  GioNetworkMonitor networkMonitor_;
  DBusWakeNotices wakeNotices_{systemBus_, sessionBus_};
  DispatchQueue utilityQueue_{"brevanholt.utility", QueuePriority::kUtility};
};

}  // namespace brevanholt::platform
