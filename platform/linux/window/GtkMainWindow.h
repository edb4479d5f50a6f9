#pragma once

#include "platform/desktop/Window.h"

#include <gtkmm/applicationwindow.h>

#include <functional>
#include <optional>
#include <string>
#include <utility>

namespace brevanholt::platform {

// The main window as a GTK window with the window manager's own frame.
class GtkMainWindow final : public Window {
 public:
  explicit GtkMainWindow(const Glib::RefPtr<Gtk::Application>& application);

  [[nodiscard]] Gtk::Window& gtk() { return window_; }

  void setDelegate(WindowDelegate* delegate) override { delegate_ = delegate; }
  [[nodiscard]] Frame frame() const override;
  void setFrame(Frame frame) override;
  void setContentView(NativeView& view) override;
  [[nodiscard]] bool isVisible() const override;
  void makeKeyAndOrderFront() override;
  void orderOut() override;
  void close() override;

  // Runs when the button of the frame is used; true where something else decides, and calls
  // closeToBackground() if so.
  void setCloseQuestion(std::function<bool()> asks) { closeQuestion_ = std::move(asks); }
  // What closing does without a question.
  void closeToBackground();

  // The token with which the window may take the focus when it is shown next (xdg-activation, or a
  // startup notification's identifier on X11).
  void setActivationToken(std::string token) { activationToken_ = std::move(token); }
  // When the person clicked on what shows the window next, in milliseconds of the X server. Another
  // clock's time is ignored.
  void setClickTime(std::uint32_t time) { clickTime_ = time; }

 private:
  bool closeRequested();
  void activeChanged();
  void useActivationToken();
  void useClickTime();

  Gtk::ApplicationWindow window_;
  WindowDelegate* delegate_ = nullptr;
  std::function<bool()> closeQuestion_;
  std::string activationToken_;
  std::uint32_t clickTime_ = GDK_CURRENT_TIME;
  bool keepsFocus_ = false;  // while it is inactive: only a grab has its keys
  std::optional<std::pair<int, int>> placeWhenHidden_;
};

}  // namespace brevanholt::platform
