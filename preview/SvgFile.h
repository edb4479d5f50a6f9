#pragma once

#include "preview/ByteReader.h"

namespace brevanholt::preview {

// Whether a file is an XML document whose root element is "svg", of whatever prefix. A page that
// contains a drawing is none.
[[nodiscard]] bool isSvg(ByteSpan file);

}  // namespace brevanholt::preview
