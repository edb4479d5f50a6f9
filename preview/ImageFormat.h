#pragma once

#include "preview/ByteReader.h"

#include <optional>

namespace brevanholt::preview {

enum class ImageFormat { kJpeg, kPng, kGif, kBmp, kTiff, kWebp, kAvif, kHeif, kSvg };

// What kind of image a file is by its content; its name has no say. Nothing for what is no image of
// these kinds, camera raw files among it: what such a file shows as a TIFF is a small thumbnail.
[[nodiscard]] std::optional<ImageFormat> formatOf(ByteSpan file);

}  // namespace brevanholt::preview
