#pragma once

#include "platform/desktop/Window.h"

#include <gtkmm/applicationwindow.h>

namespace brevanholt::platform {

// The main window as a GTK window with the window manager's own frame.
class GtkMainWindow final : public Window {
 public:
  explicit GtkMainWindow(const Glib::RefPtr<Gtk::Application>& application);

  void setDelegate(WindowDelegate* delegate) override { delegate_ = delegate; }
  [[nodiscard]] Frame frame() const override;
  void setFrame(Frame frame) override;
  void setContentView(NativeView& view) override;
  [[nodiscard]] bool isVisible() const override;
  void makeKeyAndOrderFront() override;
  void orderOut() override;
  void close() override;

 private:
  bool closeRequested();

  Gtk::ApplicationWindow window_;
  WindowDelegate* delegate_ = nullptr;
};

}  // namespace brevanholt::platform
