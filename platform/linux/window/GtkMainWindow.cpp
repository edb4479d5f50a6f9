#include "platform/linux/window/GtkMainWindow.h"

#include "platform/gtk/GtkNativeView.h"
#include "platform/linux/window/InputFocus.h"

#include <gdk/gdkwayland.h>
#include <gdk/gdkx.h>

#include <utility>

namespace brevanholt::platform {
namespace {

constexpr Frame kFirstFrame{.width = 960, .height = 680};
constexpr Frame kSmallestFrame{.width = 380, .height = 360};

// Whether a monitor shows that point; monitors come and go while the window is hidden.
bool isOnScreen(std::pair<int, int> point) {
  GdkDisplay* display = gdk_display_get_default();
  GdkMonitor* nearest = gdk_display_get_monitor_at_point(display, point.first, point.second);
  GdkRectangle area{};
  if (nearest != nullptr) gdk_monitor_get_geometry(nearest, &area);
  return point.first >= area.x && point.first < area.x + area.width && point.second >= area.y &&
         point.second < area.y + area.height;
}

}  // namespace

GtkMainWindow::GtkMainWindow(const Glib::RefPtr<Gtk::Application>& application)
    : window_(application) {
  window_.set_title("Brevanholt");
  window_.set_icon_name(application->get_id());
  window_.set_default_size(kFirstFrame.width, kFirstFrame.height);
  window_.set_size_request(kSmallestFrame.width, kSmallestFrame.height);
  window_.add_events(Gdk::PROPERTY_CHANGE_MASK);  // or the X server's time cannot be asked for
  // Connected before the handler of an engine's view in the window: Flutter's ends the program.
  window_.signal_delete_event().connect([this](GdkEventAny*) { return closeRequested(); }, false);
  window_.property_is_active().signal_changed().connect([this] { activeChanged(); });
}

void GtkMainWindow::activeChanged() {
  if (!window_.is_active()) {
    keepsFocus_ = hasInputFocus(window_);
  } else if (!std::exchange(keepsFocus_, false) && delegate_ != nullptr) {
    delegate_->windowDidBecomeKey();
  }
}

Frame GtkMainWindow::frame() const {
  Frame frame;
  window_.get_size(frame.width, frame.height);
  return frame;
}

void GtkMainWindow::setFrame(Frame frame) {
  window_.resize(frame.width, frame.height);
}

void GtkMainWindow::setContentView(NativeView& view) {
  auto& widget = dynamic_cast<GtkNativeView&>(view).widget();
  window_.remove();
  window_.add(widget);
  widget.show();
}

bool GtkMainWindow::isVisible() const {
  return window_.is_visible();
}

void GtkMainWindow::makeKeyAndOrderFront() {
  // X11's window managers place a window anew each time it is mapped.
  if (!window_.is_visible() && placeWhenHidden_ && isOnScreen(*placeWhenHidden_)) {
    window_.move(placeWhenHidden_->first, placeWhenHidden_->second);
  }
  // A window that is shown is in the taskbar, even while the program is an accessory.
  window_.set_skip_taskbar_hint(false);
  window_.set_skip_pager_hint(false);
  useActivationToken();
  useClickTime();
  window_.present();
}

// The window manager decides by it whether the window may come before others.
void GtkMainWindow::useClickTime() {
  constexpr guint32 kLongestWay = 10'000;  // milliseconds
  const guint32 click = std::exchange(clickTime_, GDK_CURRENT_TIME);
  if (click == GDK_CURRENT_TIME || !GDK_IS_X11_DISPLAY(gdk_display_get_default())) return;
  gtk_widget_realize(GTK_WIDGET(window_.gobj()));
  GdkWindow* surface = window_.get_window()->gobj();
  const guint32 age = gdk_x11_get_server_time(surface) - click;  // great for a later time
  if (age < kLongestWay) gdk_x11_window_set_user_time(surface, click);
}

void GtkMainWindow::useActivationToken() {
  if (activationToken_.empty()) return;
  const std::string token = std::exchange(activationToken_, {});
  GdkDisplay* display = gdk_display_get_default();
  if (GDK_IS_WAYLAND_DISPLAY(display)) {
    gdk_wayland_display_set_startup_notification_id(display, token.c_str());
  } else {
    window_.set_startup_id(token);
  }
}

void GtkMainWindow::orderOut() {
  if (window_.is_visible()) {
    placeWhenHidden_.emplace();
    window_.get_position(placeWhenHidden_->first, placeWhenHidden_->second);
  }
  window_.hide();
}

void GtkMainWindow::close() {
  delegate_ = nullptr;
  window_.close();
}

bool GtkMainWindow::closeRequested() {
  if (delegate_ == nullptr) return false;
  if (closeQuestion_ && closeQuestion_()) return true;
  closeToBackground();
  return true;
}

void GtkMainWindow::closeToBackground() {
  if (delegate_ != nullptr) delegate_->performClose();
}

}  // namespace brevanholt::platform
