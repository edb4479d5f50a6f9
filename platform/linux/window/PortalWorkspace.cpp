#include "platform/linux/window/PortalWorkspace.h"

#include "platform/foundation/Log.h"

#include <cstring>

#include <fcntl.h>

namespace brevanholt::platform {
namespace {

constexpr BusMethod kOpenDirectory =
    portalMethod("org.freedesktop.portal.OpenURI", "OpenDirectory");

}  // namespace

void PortalWorkspace::openUrl(const std::string& url, Callback callback) {
  gio_.openUrl(url, std::move(callback));
}

void PortalWorkspace::openFile(const std::filesystem::path& path, Callback callback) {
  gio_.openFile(path, std::move(callback));
}

void PortalWorkspace::reveal(const std::filesystem::path& path) {
  FileDescriptor item(::open(path.c_str(), O_PATH | O_CLOEXEC));
  if (!item) return logWarning(std::string("nothing can be shown: ") + std::strerror(errno));
  revealing_ = std::make_unique<PortalRequest>(
      sessionBus_, kOpenDirectory,
      PortalRequest::Parameters{.arguments = {g_variant_new_string(""), g_variant_new_handle(0)},
                                .options = {},
                                .descriptor = std::move(item)},
      [](const Result<GVariantPointer>& results) {
        if (!results.ok()) logWarning("no folder is shown: " + results.error().message());
      });
}

}  // namespace brevanholt::platform
