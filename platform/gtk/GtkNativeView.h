#pragma once

#include "platform/desktop/NativeView.h"

#include <gtkmm/widget.h>

namespace brevanholt::platform {

// A view that is a GTK widget; on this platform every view is one. Borrows the widget.
class GtkNativeView final : public NativeView {
 public:
  explicit GtkNativeView(Gtk::Widget& widget) : widget_(widget) {}
  [[nodiscard]] Gtk::Widget& widget() { return widget_; }

 private:
  Gtk::Widget& widget_;
};

}  // namespace brevanholt::platform
