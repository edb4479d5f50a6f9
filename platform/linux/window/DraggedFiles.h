#pragma once

#include "platform/desktop/DragDestination.h"

#include <string>
#include <string_view>
#include <vector>

namespace brevanholt::platform {

// The files and folders on this computer that a list of URIs names (RFC 2483, text/uri-list), each
// decoded once. Everything else in it is passed over. Asks the file system which are folders.
[[nodiscard]] DraggingInfo draggedFiles(const std::string& uriList);
// The same of plain paths.
[[nodiscard]] DraggingInfo draggedFiles(const std::vector<std::string>& paths);

}  // namespace brevanholt::platform
