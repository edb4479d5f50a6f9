#pragma once

#include "platform/desktop/Menu.h"
#include "platform/linux/GtkMenuRow.h"

#include <gtkmm/menu.h>

#include <vector>

namespace brevanholt::platform {

// A menu with its real rows, which this process shows itself. Only where windows may be placed by
// coordinates, which is on X11.
class GtkPopupMenu {
 public:
  explicit GtkPopupMenu(const Menu& menu);
  ~GtkPopupMenu();
  GtkPopupMenu(const GtkPopupMenu&) = delete;
  GtkPopupMenu& operator=(const GtkPopupMenu&) = delete;

  // Opens beside a place of the screen, in device pixels.
  void popUpAt(int x, int y);
  void popDown();

 private:
  void rebuild();
  void themeChanged();

  const Menu& menu_;
  Gtk::Menu widget_;
  std::vector<GtkMenuRow> rows_;
  Rgba textColor_;
  Connection itemsConnection_;
  Connection cancelConnection_;
};

}  // namespace brevanholt::platform
