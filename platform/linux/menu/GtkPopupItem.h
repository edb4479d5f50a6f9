#pragma once

#include "platform/desktop/Menu.h"
#include "platform/linux/menu/GtkMenuRow.h"

#include <gtkmm/menuitem.h>

#include <memory>
#include <optional>

namespace brevanholt::platform {

// An item of a menu as the toolkit's. Destroying it takes it out of the menu that it is in.
class GtkPopupItem {
 public:
  // `textColor` is the theme's, for a menu.
  GtkPopupItem(std::shared_ptr<const MenuItem> item, const Rgba& textColor);
  GtkPopupItem(const GtkPopupItem&) = delete;
  GtkPopupItem& operator=(const GtkPopupItem&) = delete;

  [[nodiscard]] Gtk::MenuItem& widget() { return *widget_; }
  [[nodiscard]] const MenuItem& item() const { return *item_; }
  // Shows another item in the same widget; false, with nothing done, where it cannot.
  bool show(const std::shared_ptr<const MenuItem>& item);

 private:
  void makeView(const Rgba& textColor);
  void makeCommand();

  std::shared_ptr<const MenuItem> item_;
  std::unique_ptr<Gtk::MenuItem> widget_;
  std::optional<GtkMenuRow> row_;  // of a view
};

}  // namespace brevanholt::platform
