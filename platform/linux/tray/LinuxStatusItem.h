#pragma once

#include "platform/desktop/StatusItem.h"
#include "platform/linux/menu/DBusMenuExporter.h"
#include "platform/linux/menu/GtkPopupMenu.h"
#include "platform/linux/tray/PanelStyle.h"
#include "platform/linux/tray/StatusNotifierItem.h"
#include "platform/linux/tray/XEmbedStatusIcon.h"

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include <sigc++/connection.h>

namespace brevanholt::platform {

// The status item on the trays that Linux desktops have: StatusNotifierItem where a tray shows such
// items, else the older tray of X11, else none until one comes.
//
// Its menu is there twice: on the bus, for the tray to draw, and on X11 as a menu of its own with
// the real rows, which a plain click opens.
class LinuxStatusItem final : public StatusItem {
 public:
  struct Options {
    std::string applicationIcon;  // its name, in the icon theme below
    std::string iconThemePath;
    std::string currentDesktop;         // as XDG_CURRENT_DESKTOP
    std::filesystem::path ownPictures;  // a folder; pictures in it show what the icon does
  };

  // Called when the person uses the icon or its menu, before what that does. A window manager asks
  // for the token or the time before it raises a window.
  struct InputEvents {
    std::function<void(const std::string& token)> activationTokenGiven;
    DBusMenuExporter::Clicked clicked;
  };

  LinuxStatusItem(Bus& sessionBus, Options options, InputEvents events);
  ~LinuxStatusItem() override;

  void setImage(const Image& image) override;
  void setToolTip(const std::string& text) override;
  void setAccessibilityLabel(const std::string& text) override;
  void setMenu(const Menu& menu) override;

  // Whether something waits for the person: tells trays the status, and puts a dot on the icon for
  // those that do not show it.
  void setNeedsAttention(bool needs);
  // Whether any tray shows it.
  [[nodiscard]] bool isShown() const;

 private:
  void shownChanged(bool isShown);
  void drawImage();
  // Whether the image is what the application's icon shows.
  [[nodiscard]] bool isOwnIcon() const;
  void popUpAt(int x, int y);
  void showAppearance();

  Bus& sessionBus_;
  std::string applicationIcon_;
  InputEvents inputEvents_;
  PanelStyle panelStyle_;
  bool placesWindows_;  // by coordinates, which X11 alone allows
  bool hasWarned_ = false;
  bool isInNotifierTray_ = false;
  std::filesystem::path ownPictures_;
  Image image_;
  std::string symbolicIcon_;
  TrayAppearance appearance_;
  std::vector<sigc::connection> themeConnections_;
  std::unique_ptr<DBusMenuExporter> exportedMenu_;
  std::unique_ptr<GtkPopupMenu> popupMenu_;
  std::unique_ptr<StatusNotifierItem> notifierItem_;
  std::unique_ptr<XEmbedStatusIcon> embeddedIcon_;
};

}  // namespace brevanholt::platform
