#pragma once

#include "platform/desktop/View.h"
#include "platform/linux/Palette.h"

#include <gtkmm/widget.h>

#include <memory>
#include <vector>

namespace brevanholt::platform {

// A view as widgets that follow its changes while this lives. The widget is managed: it belongs to
// the container it is put in, and this must go before it does.
class GtkMenuRow {
 public:
  // `textColor` is the theme's, for a menu.
  GtkMenuRow(std::shared_ptr<const FixedView> view, const Rgba& textColor);
  [[nodiscard]] Gtk::Widget& widget() { return *widget_; }

 private:
  class Maker;

  std::shared_ptr<const FixedView> view_;
  std::vector<Connection> connections_;
  Gtk::Widget* widget_;
};

}  // namespace brevanholt::platform
