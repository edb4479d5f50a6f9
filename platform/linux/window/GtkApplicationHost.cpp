#include "platform/linux/window/GtkApplicationHost.h"

#include "platform/foundation/Log.h"
#include "platform/foundation/PlatformError.h"
#include "platform/gtk/FileUri.h"
#include "platform/gtk/GLibPointers.h"
#include "platform/linux/window/ClipboardShare.h"

#include <gdk/gdkwayland.h>
#include <glib-unix.h>
#include <glibmm/main.h>
#include <gtk/gtk.h>
#include <gtkmm/clipboard.h>
#include <gtkmm/window.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <utility>

namespace brevanholt::platform {
namespace {

constexpr const char* kShareType = "(ass)";
// Started as a D-Bus service, the program quits when no request came for this long.
constexpr unsigned kIdleServiceSeconds = 10;

gboolean quitOnSignal(gpointer application) {
  logInfo("asked to quit by a signal");
  g_application_quit(G_APPLICATION(application));
  return G_SOURCE_CONTINUE;
}

GVariant* shareParameter(const LaunchRequest& request) {
  GVariantBuilder files;
  g_variant_builder_init(&files, G_VARIANT_TYPE_STRING_ARRAY);
  for (const auto& uri : request.sharedFiles) g_variant_builder_add(&files, "s", uri.c_str());
  return g_variant_new(kShareType, &files, request.sharedText.c_str());
}

ServicePasteboard pasteboardOf(GVariant* parameter) {
  ServicePasteboard pasteboard;
  GVariantIter* files = nullptr;
  const char* text = nullptr;
  g_variant_get(parameter, "(as&s)", &files, &text);
  const std::unique_ptr<GVariantIter, FreeWith<g_variant_iter_free>> ownedFiles(files);
  pasteboard.text = text;
  for (const char* uri = nullptr; g_variant_iter_next(files, "&s", &uri) != FALSE;) {
    if (auto path = pathOfFileUri(uri)) {
      pasteboard.files.emplace_back(std::move(*path));
    } else {
      logWarning(std::string("not shared, since it is no file of this computer: ") + uri);
    }
  }
  return pasteboard;
}

std::vector<Glib::RefPtr<Gio::File>> filesOf(const std::vector<std::string>& uris) {
  std::vector<Glib::RefPtr<Gio::File>> files;
  files.reserve(uris.size());
  for (const std::string& uri : uris) files.push_back(Gio::File::create_for_uri(uri));
  return files;
}

}  // namespace

GtkApplicationHost::GtkApplicationHost(const std::string& identifier, bool isService)
    : isService_(isService) {
  if (gtk_init_check(nullptr, nullptr) == FALSE) {
    throw PlatformError("Brevanholt needs a desktop: there is no display to open a window on.");
  }
  auto flags = Gio::APPLICATION_HANDLES_OPEN;
  if (isService_) flags |= Gio::APPLICATION_IS_SERVICE;
  // Wayland's app_id is the program's name, and panels take it for the desktop entry's. On X11 the
  // entry's StartupWMClass joins the two.
  if (GDK_IS_WAYLAND_DISPLAY(gdk_display_get_default())) g_set_prgname(identifier.c_str());
  application_ = Gtk::Application::create(identifier, flags);
  gtk_window_set_default_icon_name(identifier.c_str());  // of dialogs too
  application_->signal_activate().connect([this] { activated(); });
  application_->signal_open().connect(
      [this](const std::vector<Glib::RefPtr<Gio::File>>& files, const Glib::ustring&) {
        std::vector<std::string> urls;
        urls.reserve(files.size());
        for (const auto& file : files) urls.push_back(file->get_uri());
        if (ApplicationDelegate* delegate = launchedDelegate()) delegate->applicationOpen(urls);
      });
  addActions();
  try {
    application_->register_application();
  } catch (const Glib::Error& error) {
    throw PlatformError(error.what());
  }
}

void GtkApplicationHost::addActions() {
  const GVariantTypePointer type(g_variant_type_new(kShareType));
  const GObjectPointer<GSimpleAction> action(g_simple_action_new(kShareAction, type.get()));
  g_signal_connect(
      action.get(), "activate", G_CALLBACK(+[](GSimpleAction*, GVariant* parameter, gpointer self) {
        ApplicationDelegate* delegate = static_cast<GtkApplicationHost*>(self)->launchedDelegate();
        if (delegate != nullptr) delegate->shareWithBrevanholt(pasteboardOf(parameter));
      }),
      this);
  g_action_map_add_action(G_ACTION_MAP(application_->gobj()), G_ACTION(action.get()));
  application_->add_action(kChooseFilesAction, [this] {
    if (ApplicationDelegate* delegate = launchedDelegate()) delegate->chooseFilesToShare();
  });
  application_->add_action(kShareClipboardAction, [this] {
    readClipboard(pastedPictures_, [this](const ServicePasteboard& pasteboard) {
      if (ApplicationDelegate* delegate = launchedDelegate()) {
        delegate->shareWithBrevanholt(pasteboard);
      }
    });
  });
  application_->add_action(kQuitAction, [this] { terminate(); });
}

int GtkApplicationHost::forward(const LaunchRequest& request) {
  // Running a remote application activates the other one, unless this hook says that it is done.
  application_->signal_handle_local_options().connect(
      [this, &request](const Glib::RefPtr<Glib::VariantDict>&) {
        perform(request);
        return EXIT_SUCCESS;
      },
      false);
  return application_->run();
}

void GtkApplicationHost::perform(const LaunchRequest& request) {
  if (request.isShare) {
    g_action_group_activate_action(G_ACTION_GROUP(application_->gobj()), kShareAction,
                                   shareParameter(request));
  } else if (!request.action.empty()) {
    application_->activate_action(request.action);
  } else if (!request.opened.empty()) {
    application_->open(filesOf(request.opened));
  } else if (isRemote()) {
    application_->activate();
  }
}

int GtkApplicationHost::run(ApplicationDelegate& delegate, const LaunchRequest& request,
                            const std::function<void()>& atEnd) {
  delegate_ = &delegate;
  // The bus name is released after this signal.
  application_->signal_shutdown().connect(
      [this, &atEnd] {
        delegate_ = nullptr;
        // GTK runs the main loop until a clipboard manager has what was copied. It would do so
        // after this, when the window is gone that a UI's code still asks about.
        Gtk::Clipboard::get()->store();
        atEnd();
      },
      false);
  const guint onTerm = g_unix_signal_add(SIGTERM, quitOnSignal, application_->gobj());
  const guint onHangup = g_unix_signal_add(SIGHUP, quitOnSignal, application_->gobj());
  const guint onInterrupt = g_unix_signal_add(SIGINT, quitOnSignal, application_->gobj());
  if (isService_) {
    idleService_ = Glib::signal_timeout().connect_seconds(
        [this] {
          application_->quit();
          return false;
        },
        kIdleServiceSeconds);
  }
  firstRequest_ = request;
  application_->hold();  // a hidden window does not end the program
  const int status = application_->run();
  g_source_remove(onTerm);
  g_source_remove(onHangup);
  g_source_remove(onInterrupt);
  delegate_ = nullptr;
  return status;
}

void GtkApplicationHost::restart() {
  wantsRestart_ = true;
  terminate();
}

void GtkApplicationHost::setActivationPolicy(ActivationPolicy policy) {
  const bool hidden = policy == ActivationPolicy::kAccessory;
  for (Gtk::Window* window : application_->get_windows()) {
    window->set_skip_taskbar_hint(hidden);
    window->set_skip_pager_hint(hidden);
  }
}

ApplicationDelegate* GtkApplicationHost::launchedDelegate() {
  idleService_.disconnect();
  if (delegate_ != nullptr && !std::exchange(isLaunched_, true)) {
    delegate_->applicationDidFinishLaunching();
  }
  return delegate_;
}

void GtkApplicationHost::activated() {
  const bool wasLaunched = isLaunched_;
  if (launchedDelegate() == nullptr) return;
  if (!wasLaunched) return perform(firstRequest_);
  startedAgain_();
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
