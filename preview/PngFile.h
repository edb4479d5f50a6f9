#pragma once

#include "preview/ByteReader.h"

#include <optional>

namespace brevanholt::preview {

// The outside of a PNG file (PNG specification, second edition, 5).
struct PngFile {
  std::uint32_t width = 0;
  std::uint32_t height = 0;
  std::size_t length = 0;  // up to and with the end chunk

  // What the header says; `length` is not known then. Nothing where there is no header.
  [[nodiscard]] static std::optional<PngFile> parseHeader(ByteSpan bytes);
  // Nothing where the chunks do not follow each other from the header to the end.
  [[nodiscard]] static std::optional<PngFile> parse(ByteSpan bytes);
};

}  // namespace brevanholt::preview
