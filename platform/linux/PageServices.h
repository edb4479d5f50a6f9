#pragma once

#include "platform/engine/web/EngineApplication.h"
#include "platform/linux/DesktopAccess.h"
#include "platform/linux/session/DesktopAppearance.h"
#include "platform/linux/tray/LinuxStatusItem.h"
#include "platform/linux/window/GtkApplicationHost.h"
#include "platform/linux/window/GtkDropContainer.h"
#include "platform/linux/window/GtkMainWindow.h"

#include <filesystem>

namespace brevanholt::platform {

// Answers what the page asks of this desktop besides the host's methods, and tells it of drags, of
// the desktop's looks, and of a window that is about to be closed where nothing else shows the
// program (docs/engine.md). Borrows all that it is given.
class PageServices {
 public:
  struct Access {
    EngineApplication& page;
    GtkApplicationHost& application;
    GtkMainWindow& window;
    GtkDropContainer& dropContainer;
    LinuxStatusItem& statusItem;
    Workspace& workspace;
    std::filesystem::path help;  // has a folder for each language
  };

  PageServices(Bus& sessionBus, const Access& access);
  PageServices(const PageServices&) = delete;
  PageServices& operator=(const PageServices&) = delete;

 private:
  void answerPage();
  void watchDrags();
  void openHelp(const std::string& language, MethodResult result);
  [[nodiscard]] bool asksBeforeClosing();
  void appearanceChanged(const Appearance& appearance);

  Access access_;
  bool prefersDarkAnyway_;  // by the person's own settings of GTK
  DesktopAppearance appearance_;
  bool hasAskedBeforeClosing_ = false;
  std::size_t logged_ = 0;
};

}  // namespace brevanholt::platform
