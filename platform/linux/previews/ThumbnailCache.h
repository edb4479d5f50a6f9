#pragma once

#include <filesystem>
#include <span>
#include <string>

namespace brevanholt::platform {

// One of the sizes that thumbnails are kept in.
struct ThumbnailFlavor {
  const char* name = "";
  int edge = 0;  // pixels
};

// The smallest of the flavours named that holds so many pixels, else the largest of them. Null
// where none is known.
[[nodiscard]] const ThumbnailFlavor* flavorFor(int pixels, std::span<const std::string> available);

// Where the thumbnail of a URI is kept (freedesktop.org Thumbnail Managing Standard).
[[nodiscard]] std::filesystem::path thumbnailPath(const std::filesystem::path& cacheHome,
                                                  const ThumbnailFlavor& flavor,
                                                  const std::string& uri);

}  // namespace brevanholt::platform
