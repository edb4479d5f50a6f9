#include "platform/linux/storage/XdgFolders.h"

#include <glib.h>

#include <cstdlib>

namespace brevanholt::platform {
namespace {

namespace fs = std::filesystem;

fs::path downloads() {
  const char* configured = g_get_user_special_dir(G_USER_DIRECTORY_DOWNLOAD);
  return configured != nullptr ? fs::path(configured) : fs::path(g_get_home_dir()) / "Downloads";
}

// /tmp is memory on many systems, and shared; the cache is on the disk and this user's own.
fs::path temporary() {
  const char* chosen = std::getenv("TMPDIR");
  return chosen != nullptr && *chosen == '/' ? chosen : g_get_user_cache_dir();
}

fs::path workingDirectory() {
  std::error_code error;
  const fs::path directory = fs::current_path(error);
  return error ? fs::path() : directory;
}

}  // namespace

KnownFolders xdgFolders() {
  return {.downloads = downloads(),
          .temporary = temporary(),
          .caches = g_get_user_cache_dir(),
          .applicationSupport = g_get_user_data_dir(),
          .configuration = fs::path(g_get_user_config_dir()) / "brevanholt",
          .workingDirectory = workingDirectory()};
}

}  // namespace brevanholt::platform
