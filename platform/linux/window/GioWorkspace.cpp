#include "platform/linux/window/GioWorkspace.h"

#include "platform/foundation/Log.h"
#include "platform/gtk/FileUri.h"

#include <gdk/gdk.h>

namespace brevanholt::platform {
namespace {

constexpr BusMethod kShowItems{"org.freedesktop.FileManager1", "/org/freedesktop/FileManager1",
                               "org.freedesktop.FileManager1", "ShowItems"};

}  // namespace

void GioWorkspace::openUrl(const std::string& url, Callback callback) {
  GdkDisplay* display = gdk_display_get_default();
  const GObjectPointer<GAppLaunchContext> context(
      display != nullptr ? G_APP_LAUNCH_CONTEXT(gdk_display_get_app_launch_context(display))
                         : g_app_launch_context_new());
  g_app_info_launch_default_for_uri_async(
      url.c_str(), context.get(), nullptr,
      [](GObject*, GAsyncResult* asyncResult, gpointer data) {
        const std::unique_ptr<Callback> finish(static_cast<Callback*>(data));
        GError* failure = nullptr;
        g_app_info_launch_default_for_uri_finish(asyncResult, &failure);
        const GErrorPointer error(failure);
        if (error) return (*finish)(PlatformError(error->message));
        (*finish)(Done{});
      },
      new Callback(std::move(callback)));
}

void GioWorkspace::openFile(const std::filesystem::path& path, Callback callback) {
  openUrl(fileUriOf(path), std::move(callback));
}

void GioWorkspace::reveal(const std::filesystem::path& path) {
  const std::string uri = fileUriOf(path);
  const char* const uris[] = {uri.c_str(), nullptr};
  sessionBus_.call(
      kShowItems, g_variant_new("(^ass)", uris, ""), "()",
      lifetime_.bind([this, folder = path.parent_path()](const Result<GVariantPointer>& reply) {
        if (reply.ok()) return;
        logDebug("no file manager shows items: " + reply.error().message());
        openFile(folder, [](const Result<Done>& outcome) {
          if (!outcome.ok()) logWarning("no folder can be shown: " + outcome.error().message());
        });
      }));
}

}  // namespace brevanholt::platform
