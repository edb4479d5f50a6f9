#pragma once

#include "preview/ByteReader.h"

#include <optional>
#include <vector>

namespace brevanholt::preview {

// A BMP file with the header of OS/2 1.x (BITMAPCOREHEADER) and a palette, written anew with the
// header that Windows has used since (BITMAPINFOHEADER): gdk-pixbuf does not read the palette of
// the former. Nothing for any other file.
[[nodiscard]] std::optional<std::vector<std::uint8_t>> withInfoHeader(ByteSpan file);

}  // namespace brevanholt::preview
