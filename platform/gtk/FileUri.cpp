#include "platform/gtk/FileUri.h"

#include "platform/gtk/GLibPointers.h"

namespace brevanholt::platform {

std::optional<std::string> pathOfFileUri(const std::string& uri) {
  char* hostName = nullptr;
  const GCharPointer path(g_filename_from_uri(uri.c_str(), &hostName, nullptr));
  const GCharPointer host(hostName);
  const bool isHere = !host || g_strcmp0(host.get(), "localhost") == 0 ||
                      g_strcmp0(host.get(), g_get_host_name()) == 0;
  return path && isHere ? std::optional<std::string>(path.get()) : std::nullopt;
}

std::string fileUriOf(const std::string& absolutePath) {
  const GCharPointer uri(g_filename_to_uri(absolutePath.c_str(), nullptr, nullptr));
  return uri ? uri.get() : "";
}

}  // namespace brevanholt::platform
