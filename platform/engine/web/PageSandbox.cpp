#include "platform/engine/web/PageSandbox.h"

#include "platform/foundation/Log.h"
#include "platform/gtk/GLibPointers.h"

#include <array>
#include <string>
#include <string_view>

namespace brevanholt::platform {
namespace {

// Where WebKit, as Debian builds it, looks for what its sandbox is made of.
constexpr const char* kBubblewrap = "/usr/bin/bwrap";
constexpr const char* kBusProxy = "/usr/bin/xdg-dbus-proxy";

// WebKit makes the folder of the session bus's socket visible in the sandbox. For a socket in "/",
// even a missing one, that is the whole file system. The sandbox's /.flatpak-info would then be
// written to this machine, and other programs would believe that they run in a Flatpak.
bool isBusInRoot() {
  const char* address = g_getenv("DBUS_SESSION_BUS_ADDRESS");
  const std::string_view path = "unix:path=/";
  if (address == nullptr || !std::string_view(address).starts_with(path)) return false;
  return std::string_view(address + path.size()).find('/') == std::string_view::npos;
}

// Nothing where bubblewrap can make the namespaces that WebKit asks it for. Takes some
// milliseconds.
std::string whyNoSandbox() {
  if (g_file_test(kBusProxy, G_FILE_TEST_IS_EXECUTABLE) == FALSE) {
    return std::string(kBusProxy) + " is missing";
  }
  if (isBusInRoot()) return "the session bus's socket is in /";
  const std::array<const char*, 11> command{kBubblewrap, "--unshare-all", "--ro-bind", "/",
                                            "/",         "--proc",        "/proc",     "--dev",
                                            "/dev",      "/bin/true",     nullptr};
  const auto flags =
      static_cast<GSpawnFlags>(G_SPAWN_STDOUT_TO_DEV_NULL | G_SPAWN_STDERR_TO_DEV_NULL);
  int status = 0;
  GError* failure = nullptr;
  const bool works = g_spawn_sync(nullptr, const_cast<char**>(command.data()), nullptr, flags,
                                  nullptr, nullptr, nullptr, nullptr, &status, &failure) != FALSE &&
                     g_spawn_check_wait_status(status, &failure) != FALSE;
  const GErrorPointer error(failure);
  return works ? "" : std::string(kBubblewrap) + ": " + error->message;
}

}  // namespace

void sandboxPages(WebKitWebContext* context, const std::filesystem::path& readable,
                  bool isInFlatpak) {
  const std::string why = isInFlatpak ? "this is a Flatpak" : whyNoSandbox();
  if (!why.empty()) return logWarning("the page's process has no sandbox of its own: " + why);
  webkit_web_context_add_path_to_sandbox(context, readable.c_str(), TRUE);
  webkit_web_context_set_sandbox_enabled(context, TRUE);
}

}  // namespace brevanholt::platform
