#pragma once

#include "platform/desktop/StatusItem.h"
#include "platform/linux/DBusMenuExporter.h"
#include "platform/linux/GtkPopupMenu.h"
#include "platform/linux/StatusNotifierItem.h"
#include "platform/linux/XEmbedStatusIcon.h"

#include <memory>
#include <optional>
#include <string>

namespace brevanholt::platform {

// The status item on the trays that Linux desktops have: StatusNotifierItem where something watches
// for such items, else the older tray of X11, else none until one comes.
//
// Its menu is there twice: on the bus, for the tray to draw, and on X11 as a menu of its own with
// the real rows, which a plain click opens.
class LinuxStatusItem final : public StatusItem {
 public:
  LinuxStatusItem(Bus& sessionBus, std::string applicationIcon, std::string iconThemePath,
                  std::function<void(const std::string& token)> activationTokenGiven);

  void setImage(const Image& image) override;
  void setToolTip(const std::string& text) override;
  void setAccessibilityLabel(const std::string& text) override;
  void setMenu(const Menu& menu) override;

 private:
  void watcherChanged(bool isThere);
  void popUpAt(int x, int y);
  void showAppearance();

  Bus& sessionBus_;
  std::string applicationIcon_;
  std::function<void(const std::string&)> activationTokenGiven_;
  bool isOnX11_;
  bool hasWarned_ = false;
  TrayAppearance appearance_;
  std::unique_ptr<DBusMenuExporter> exportedMenu_;
  std::unique_ptr<GtkPopupMenu> popupMenu_;
  std::unique_ptr<StatusNotifierItem> notifierItem_;
  std::unique_ptr<XEmbedStatusIcon> embeddedIcon_;
};

}  // namespace brevanholt::platform
