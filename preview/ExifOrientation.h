#pragma once

#include "preview/ByteReader.h"
#include "preview/ImageFormat.h"

namespace brevanholt::preview {

// The orientation that the Exif block of a PNG or WebP file asks for, 1 to 8 as Exif numbers them;
// zero where there is none, and for other formats, whose loaders read it themselves.
[[nodiscard]] unsigned exifOrientation(ImageFormat format, ByteSpan file);

}  // namespace brevanholt::preview
