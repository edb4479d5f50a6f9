#pragma once

#include "preview/ByteReader.h"

namespace brevanholt::preview {

// TIFF 6.0, of either byte order.
[[nodiscard]] bool isTiff(ByteSpan file);

// Whether the first image of a TIFF file stands for another: a camera's raw data, which no TIFF
// decoder reads, or its small thumbnail.
[[nodiscard]] bool isCameraRaw(ByteSpan tiff);

}  // namespace brevanholt::preview
