#pragma once

#include "platform/desktop/View.h"
#include "platform/linux/menu/Palette.h"

#include <gtkmm/widget.h>

#include <memory>
#include <string>
#include <vector>

namespace brevanholt::platform {

// A view as widgets that follow its changes while this lives. The widget is managed: it belongs to
// the container it is put in, and this must go before it does.
class GtkMenuRow {
 public:
  // `textColor` is the theme's, for a menu.
  GtkMenuRow(std::shared_ptr<const FixedView> view, const Rgba& textColor);
  [[nodiscard]] Gtk::Widget& widget() { return *widget_; }

  // Shows another view in the same widgets; false, with nothing done, where it is built otherwise.
  bool show(const std::shared_ptr<const FixedView>& view);

 private:
  class Maker;
  class Filler;

  void fill(std::shared_ptr<const FixedView> view);

  std::string structure_;  // of the view: all of it but texts, values and the colours of dots
  std::shared_ptr<const FixedView> view_;
  Rgba textColor_;
  std::vector<Gtk::Widget*> leaves_;  // for each label, dot and bar, in the view's order
  std::vector<Connection> connections_;
  Gtk::Widget* widget_;
};

}  // namespace brevanholt::platform
