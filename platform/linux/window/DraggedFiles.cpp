#include "platform/linux/window/DraggedFiles.h"

#include "platform/files/Files.h"
#include "platform/gtk/FileUri.h"
#include "platform/gtk/GLibPointers.h"

namespace brevanholt::platform {

DraggingInfo draggedFiles(const std::string& uriList) {
  const std::unique_ptr<char*, FreeWith<g_strfreev>> uris(g_uri_list_extract_uris(uriList.c_str()));
  std::vector<std::string> paths;
  for (char** uri = uris.get(); *uri != nullptr; ++uri) {
    if (auto path = pathOfFileUri(*uri)) paths.push_back(std::move(*path));
  }
  return draggedFiles(paths);
}

DraggingInfo draggedFiles(const std::vector<std::string>& paths) {
  DraggingInfo drag;
  for (const std::string& path : paths) {
    const bool lacksSlash = !path.ends_with('/') && isDirectory(path);
    drag.filePaths.push_back(lacksSlash ? path + '/' : path);
  }
  return drag;
}

}  // namespace brevanholt::platform
