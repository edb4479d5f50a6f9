#pragma once

#include "platform/gtk/GLibPointers.h"

#include <gtk/gtk.h>

#include <functional>
#include <string>

namespace brevanholt::platform {

// The item in a tray of the older kind (freedesktop System Tray Protocol). X11 only.
class XEmbedStatusIcon {
 public:
  // `activated` gets the place of the screen beside which to open the menu.
  XEmbedStatusIcon(const std::string& iconName, const std::string& toolTip,
                   std::function<void(int x, int y)> activated);
  ~XEmbedStatusIcon();
  XEmbedStatusIcon(const XEmbedStatusIcon&) = delete;
  XEmbedStatusIcon& operator=(const XEmbedStatusIcon&) = delete;

  void setIcon(const std::string& name);
  void setToolTip(const std::string& text);
  // Whether any program on this display runs such a tray.
  [[nodiscard]] static bool hasTray();

 private:
  void clicked() const;

  std::function<void(int, int)> activated_;
  GObjectPointer<GtkStatusIcon> icon_;
};

}  // namespace brevanholt::platform
