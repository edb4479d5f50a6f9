#pragma once

#include "preview/ByteReader.h"

namespace brevanholt::preview {

// TIFF 6.0, of either byte order.
[[nodiscard]] bool isTiff(ByteSpan file);

// Whether the first image of a TIFF file stands for another: a camera's raw data, which no TIFF
// decoder reads, or its small thumbnail.
[[nodiscard]] bool isCameraRaw(ByteSpan tiff);

// The orientation of the first image, as Exif numbers them; zero where it has none, and where this
// is no TIFF file. Exif blocks are TIFF files too.
[[nodiscard]] unsigned tiffOrientation(ByteSpan tiff);

// Whether the first image has an alpha channel, of either kind.
[[nodiscard]] bool hasAlpha(ByteSpan tiff);

}  // namespace brevanholt::preview
