#include "platform/engine/web/WebEngine.h"

#include "platform/engine/web/BundleManifest.h"
#include "platform/engine/web/NavigationLock.h"
#include "platform/engine/web/PageConsole.h"
#include "platform/engine/web/PageSandbox.h"
#include "platform/engine/web/link/EngineArguments.h"
#include "platform/engine/web/link/LinkFrame.h"
#include "platform/foundation/Log.h"

#include <gio/gunixfdlist.h>

#include <algorithm>

namespace brevanholt::platform {
namespace {

// A page that dies again this soon is not loaded again at once.
constexpr std::chrono::seconds kReloadPause{5};

void setFeature(WebKitSettings* settings, std::string_view identifier, bool enabled) {
  WebKitFeatureList* features = webkit_settings_get_all_features();
  for (gsize index = 0; index < webkit_feature_list_get_length(features); ++index) {
    WebKitFeature* feature = webkit_feature_list_get(features, index);
    if (identifier == webkit_feature_get_identifier(feature)) {
      webkit_settings_set_feature_enabled(settings, feature, enabled ? TRUE : FALSE);
    }
  }
  webkit_feature_list_unref(features);
}

struct FreeMemoryPressureSettings {
  void operator()(WebKitMemoryPressureSettings* settings) const {
    webkit_memory_pressure_settings_free(settings);
  }
};

using MemoryPressureSettings =
    std::unique_ptr<WebKitMemoryPressureSettings, FreeMemoryPressureSettings>;

// The page's process checks its memory every 30 seconds, and frees caches above 120 MB, and more of
// them above 180 MB. It is never killed for its memory.
MemoryPressureSettings memoryPressureSettings() {
  MemoryPressureSettings settings(webkit_memory_pressure_settings_new());
  webkit_memory_pressure_settings_set_memory_limit(settings.get(), 600);  // MB
  webkit_memory_pressure_settings_set_conservative_threshold(settings.get(), 0.2);
  webkit_memory_pressure_settings_set_strict_threshold(settings.get(), 0.3);
  webkit_memory_pressure_settings_set_kill_threshold(settings.get(), 0);
  webkit_memory_pressure_settings_set_poll_interval(settings.get(), 30);
  return settings;
}

}  // namespace

WebEngine::WebEngine(WebEngineOptions options, MainQueue& mainQueue)
    : options_(std::move(options)),
      needs_(readBundleManifest(options_.uiBundle)),
      scheme_(options_.uiBundle,
              options_.keepsBundle ? BundleScheme::Source::kMemory : BundleScheme::Source::kFiles),
      files_(messenger_, mainQueue),
      sockets_(messenger_, needs_),
      transfers_(messenger_, sockets_.table(), mainQueue),
      application_(messenger_) {
  answerPage();
  createContext();
  createView();
  load();
}

WebEngine::~WebEngine() {
  g_signal_handlers_disconnect_by_data(webView_.get(), this);
  g_signal_handlers_disconnect_by_data(context_.get(), this);
}

void WebEngine::answerPage() {
  application_.answer("arguments", [this](const Map&) {
    return List(options_.uiArguments.begin(), options_.uiArguments.end());
  });
  application_.answer("setZoom", [this](const Map& arguments) {
    setZoom(sizeIn(arguments, "percent"));
    return Value();
  });
}

void WebEngine::setZoom(std::int64_t percent) {
  constexpr std::int64_t kLeast = 25;
  constexpr std::int64_t kMost = 500;
  const auto zoom = static_cast<double>(std::clamp(percent, kLeast, kMost)) / 100;
  webkit_web_view_set_zoom_level(webView_.get(), zoom);
}

void WebEngine::createContext() {
  const GObjectPointer<WebKitWebsiteDataManager> nothingKept(
      webkit_website_data_manager_new_ephemeral());
  const MemoryPressureSettings memory = memoryPressureSettings();
  context_.reset(WEBKIT_WEB_CONTEXT(g_object_new(WEBKIT_TYPE_WEB_CONTEXT, "website-data-manager",
                                                 nothingKept.get(), "memory-pressure-settings",
                                                 memory.get(), nullptr)));
  sandboxPages(context_.get(), options_.webExtensions, options_.isInFlatpak);
  webkit_web_context_set_cache_model(context_.get(), WEBKIT_CACHE_MODEL_DOCUMENT_VIEWER);
  g_signal_connect(context_.get(), "initialize-web-extensions",
                   G_CALLBACK(+[](WebKitWebContext* context, gpointer self) {
                     webkit_web_context_set_web_extensions_directory(
                         context, static_cast<WebEngine*>(self)->options_.webExtensions.c_str());
                   }),
                   this);
  scheme_.registerIn(context_.get());
  refuseDownloads(context_.get());
}

void WebEngine::createView() {
  GtkWidget* widget = webkit_web_view_new_with_context(context_.get());
  webView_.reset(WEBKIT_WEB_VIEW(g_object_ref_sink(widget)));
  nativeView_ = std::make_unique<GtkNativeView>(*Glib::wrap(widget));
  configureSettings();
  leaveDragsToTheHost();
  lockToBundle(webView_.get(), options_.developerTools);
  if (options_.developerTools) showPageConsole(webView_.get());
  g_signal_connect(
      webView_.get(), "user-message-received",
      G_CALLBACK(+[](WebKitWebView*, WebKitUserMessage* message, gpointer self) -> gboolean {
        static_cast<WebEngine*>(self)->pageJoined(message);
        return TRUE;
      }),
      this);
  g_signal_connect(
      webView_.get(), "web-process-terminated",
      G_CALLBACK(+[](WebKitWebView*, WebKitWebProcessTerminationReason reason, gpointer self) {
        static_cast<WebEngine*>(self)->webProcessEnded(reason);
      }),
      this);
}

void WebEngine::configureSettings() {
  WebKitSettings* settings = webkit_web_view_get_settings(webView_.get());
  webkit_settings_set_enable_developer_extras(settings, options_.developerTools ? TRUE : FALSE);
  webkit_settings_set_javascript_can_open_windows_automatically(settings, FALSE);
  webkit_settings_set_enable_back_forward_navigation_gestures(settings, FALSE);
  webkit_settings_set_enable_page_cache(settings, FALSE);
  webkit_settings_set_enable_html5_database(settings, FALSE);
  webkit_settings_set_enable_webrtc(settings, FALSE);
  setFeature(settings, "HiddenPageDOMTimerThrottling", false);
  setFeature(settings, "PageVisibilityBasedProcessSuppression", false);
  // Software rendering: text and lists appear sooner, in half the memory.
  webkit_settings_set_hardware_acceleration_policy(settings,
                                                   WEBKIT_HARDWARE_ACCELERATION_POLICY_NEVER);
}

// The view takes drags for the page to handle; here the container around it is the drop target.
void WebEngine::leaveDragsToTheHost() {
  const auto unset = +[](GtkWidget* widget, gpointer) { gtk_drag_dest_unset(widget); };
  unset(GTK_WIDGET(webView_.get()), nullptr);
  g_signal_connect_after(webView_.get(), "realize", G_CALLBACK(unset), nullptr);
}

void WebEngine::load() {
  onReload_.stop();
  lastLoad_ = std::chrono::steady_clock::now();
  webkit_web_view_load_uri(webView_.get(), kBundleOrigin);
}

void WebEngine::pageJoined(WebKitUserMessage* message) {
  GUnixFDList* descriptors = webkit_user_message_get_fd_list(message);
  if (webkit_user_message_get_name(message) != std::string_view(kPageJoinedMessage) ||
      descriptors == nullptr || g_unix_fd_list_get_length(descriptors) != 1)
    return;
  const int descriptor = g_unix_fd_list_get(descriptors, 0, nullptr);
  if (descriptor < 0) return;
  messenger_.attach(FileDescriptor(descriptor), [this] { pageGone(); });
}

void WebEngine::pageGone() {
  files_.closeAll();
  transfers_.closeAll();
  sockets_.closeAll();
}

void WebEngine::webProcessEnded(WebKitWebProcessTerminationReason reason) {
  logWarning(reason == WEBKIT_WEB_PROCESS_EXCEEDED_MEMORY_LIMIT
                 ? "the user interface used too much memory; loading it again"
                 : "the user interface's process ended; loading it again");
  messenger_.detach();
  pageGone();
  uiDidEnd.emit();
  if (std::chrono::steady_clock::now() - lastLoad_ > kReloadPause) return load();
  if (!onReload_) onReload_ = LoopSource::after(kReloadPause, [this] { load(); });
}

}  // namespace brevanholt::platform
