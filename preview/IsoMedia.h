#pragma once

#include "preview/ByteReader.h"

namespace brevanholt::preview {

// Files of the ISO base media family (ISO/IEC 14496-12) that hold still images (ISO/IEC 23008-12).

// Whether the file names `brand` as one of those it conforms to.
[[nodiscard]] bool hasBrand(ByteSpan file, std::string_view brand);

// The most pixels that any image in the file is said to have; zero where it says nothing.
[[nodiscard]] std::uint64_t mostAnnouncedPixels(ByteSpan file);

}  // namespace brevanholt::preview
