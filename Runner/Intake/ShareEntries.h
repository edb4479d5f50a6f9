#pragma once

#include "platform/channel/Value.h"

#include <filesystem>
#include <stop_token>
#include <string>
#include <vector>

namespace brevanholt {

// How items to send are described to the UI: maps with "path" (absolute) and "name" (its last
// component), and "size" in bytes. All but pickedFileEntry() touch the file system, and may take
// long for a folder; they end early when a stop is requested.

// A path without a slash at its end, but for "/" itself: what an item is known by.
[[nodiscard]] std::filesystem::path withoutTrailingSlash(const std::filesystem::path& path);

// Whether the UI can be told of the path: codec and UI know text only.
[[nodiscard]] bool canBeNamed(const std::filesystem::path& path);
// Takes out the paths that the UI cannot be told of, and logs each.
void eraseUnnameable(std::vector<std::filesystem::path>& paths);

// A file whose size the UI finds out by itself: "size" is 0.
[[nodiscard]] platform::Map pickedFileEntry(const std::filesystem::path& file);

// A folder and everything in it, itself first: "relativePath" begins with its own name, "kind" is
// "directory" or "file".
[[nodiscard]] platform::List folderEntries(const std::filesystem::path& folder,
                                           const std::stop_token& stop = {});

// A folder as above, or one entry of "kind" "file" for anything else.
[[nodiscard]] platform::List shareEntries(const std::filesystem::path& location,
                                          const std::stop_token& stop = {});

// A shared text: "kind" "text", the text under "text", and no path.
[[nodiscard]] platform::Map textEntry(const std::string& text);

}  // namespace brevanholt
