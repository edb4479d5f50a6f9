#pragma once

#include "preview/ByteReader.h"
#include "preview/Protocol.h"

#include <optional>
#include <string>
#include <variant>
#include <vector>

namespace brevanholt::preview {

// The file that a thumbnail shows, as it says in itself (freedesktop.org Thumbnail Managing
// Standard).
struct ThumbnailOrigin {
  std::string uri;
  std::int64_t modified = 0;  // seconds since 1970
};

struct PreviewRequest {
  int maximumDimension = 0;  // pixels
  std::optional<ThumbnailOrigin> thumbnailOf;
};

// The first image of the file, upright, scaled down to the size asked for (never up), as PNG; or
// why there is none.
[[nodiscard]] std::variant<std::string, ExitStatus> makePreview(ByteSpan file,
                                                                const PreviewRequest& request);

}  // namespace brevanholt::preview
