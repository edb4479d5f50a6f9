// The module that the engine loads into the process of each page. It joins every new page of the UI
// bundle, and no other, to the host by a socket of its own; one end goes to the host with the
// engine's own messages, so there is no name on disk or bus that anybody else could open.

#include "platform/engine/web/BundleOrigin.h"
#include "platform/engine/web/extension/PageConnection.h"
#include "platform/engine/web/link/LinkFrame.h"

#include <gio/gunixfdlist.h>
#include <webkit2/webkit-web-extension.h>

#include <array>
#include <memory>

#include <sys/socket.h>

namespace {

using namespace brevanholt::platform;

using SharedConnection = std::shared_ptr<PageConnection>;

constexpr const char* kConnectionKey = "brevanholt-page-connection";

void deleteConnection(gpointer data) {
  delete static_cast<SharedConnection*>(data);
}

void sendToHost(WebKitWebPage* page, int descriptor) {
  const GObjectPointer<GUnixFDList> descriptors(g_unix_fd_list_new_from_array(&descriptor, 1));
  WebKitUserMessage* message =
      webkit_user_message_new_with_fd_list(kPageJoinedMessage, nullptr, descriptors.get());
  webkit_web_page_send_message_to_view(page, message, nullptr, nullptr, nullptr);
}

void windowObjectCleared(WebKitScriptWorld* world, WebKitWebPage* page, WebKitFrame* frame,
                         gpointer) {
  if (webkit_frame_is_main_frame(frame) == FALSE) return;
  g_object_set_data(G_OBJECT(page), kConnectionKey, nullptr);  // the page before has gone
  const char* uri = webkit_frame_get_uri(frame);
  if (uri == nullptr || !g_str_has_prefix(uri, kBundleOrigin)) return;

  std::array<int, 2> ends{};
  if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0) {
    return g_warning("the page cannot be joined to the host: %s", g_strerror(errno));
  }
  auto connection = std::make_shared<PageConnection>(FileDescriptor(ends[0]));
  sendToHost(page, ends[1]);  // which closes it
  const GObjectPointer<JSCContext> context(
      webkit_frame_get_js_context_for_script_world(frame, world));
  connection->exposeTo(context.get());
  g_object_set_data_full(G_OBJECT(page), kConnectionKey,
                         new SharedConnection(std::move(connection)), deleteConnection);
}

}  // namespace

extern "C" G_MODULE_EXPORT void webkit_web_extension_initialize(WebKitWebExtension*) {
  g_signal_connect(webkit_script_world_get_default(), "window-object-cleared",
                   G_CALLBACK(windowObjectCleared), nullptr);
}
