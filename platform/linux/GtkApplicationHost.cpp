#include "platform/linux/GtkApplicationHost.h"

#include "platform/foundation/Log.h"
#include "platform/foundation/PlatformError.h"

#include <glib-unix.h>
#include <gtk/gtk.h>
#include <gtkmm/window.h>

#include <algorithm>
#include <csignal>
#include <utility>

namespace brevanholt::platform {
namespace {

gboolean quitOnSignal(gpointer application) {
  logInfo("asked to quit by a signal");
  g_application_quit(G_APPLICATION(application));
  return G_SOURCE_CONTINUE;
}

}  // namespace

GtkApplicationHost::GtkApplicationHost(const std::string& identifier) {
  if (gtk_init_check(nullptr, nullptr) == FALSE) {
    throw PlatformError("Brevanholt needs a desktop: there is no display to open a window on.");
  }
  application_ = Gtk::Application::create(identifier);
  application_->signal_activate().connect([this] { activated(); });
  try {
    application_->register_application();
  } catch (const Glib::Error& error) {
    throw PlatformError(error.what());
  }
}

int GtkApplicationHost::forward() {
  return application_->run();
}

int GtkApplicationHost::run(ApplicationDelegate& delegate) {
  delegate_ = &delegate;
  const guint onTerm = g_unix_signal_add(SIGTERM, quitOnSignal, application_->gobj());
  const guint onInterrupt = g_unix_signal_add(SIGINT, quitOnSignal, application_->gobj());
  application_->hold();  // a hidden window does not end the program
  const int status = application_->run();
  g_source_remove(onTerm);
  g_source_remove(onInterrupt);
  delegate_ = nullptr;
  return status;
}

void GtkApplicationHost::setActivationPolicy(ActivationPolicy policy) {
  const bool hidden = policy == ActivationPolicy::kAccessory;
  for (Gtk::Window* window : application_->get_windows()) {
    window->set_skip_taskbar_hint(hidden);
    window->set_skip_pager_hint(hidden);
  }
}

void GtkApplicationHost::activated() {
  if (delegate_ == nullptr) return;
  if (!std::exchange(isLaunched_, true)) return delegate_->applicationDidFinishLaunching();
  const bool hadVisibleWindows = hasVisibleWindows();
  if (!delegate_->applicationShouldHandleReopen(hadVisibleWindows)) return;
  // What the desktop does for a program that is launched again: a window that may be buried rises.
  if (hadVisibleWindows) {
    if (Gtk::Window* window = application_->get_active_window()) window->present();
  }
}

bool GtkApplicationHost::hasVisibleWindows() const {
  const auto windows = application_->get_windows();
  return std::any_of(windows.begin(), windows.end(),
                     [](Gtk::Window* window) { return window->is_visible(); });
}

}  // namespace brevanholt::platform
