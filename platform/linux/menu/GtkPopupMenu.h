#pragma once

#include "platform/desktop/Menu.h"
#include "platform/gtk/LoopSource.h"
#include "platform/linux/menu/GtkPopupItem.h"

#include <gtkmm/menu.h>

#include <memory>
#include <vector>

namespace brevanholt::platform {

// A menu with its real rows, which this process shows itself. Only where windows may be placed by
// coordinates, which is on X11.
//
// It follows the model only while it is open. What stays as it was keeps its widget, and with it
// the selection and a click that has begun; while a button is down nothing moves.
class GtkPopupMenu {
 public:
  explicit GtkPopupMenu(const Menu& menu);
  ~GtkPopupMenu();
  GtkPopupMenu(const GtkPopupMenu&) = delete;
  GtkPopupMenu& operator=(const GtkPopupMenu&) = delete;

  // Opens beside a place of the screen as the tray gave it, or at the pointer where that is
  // elsewhere.
  void popUpNear(int x, int y);
  void popDown();

 private:
  using Items = std::vector<std::unique_ptr<GtkPopupItem>>;

  void modelChanged();
  void follow();
  void themeChanged();
  void buttonChanged(bool isDown);
  bool keyPressed(const GdkEventKey& event);

  const Menu& menu_;
  Gtk::Menu widget_;
  Items items_;
  Rgba textColor_;
  bool isButtonDown_ = false;
  LoopSource following_;
  bool isStale_ = true;
  Connection itemsConnection_;
  Connection cancelConnection_;
};

}  // namespace brevanholt::platform
