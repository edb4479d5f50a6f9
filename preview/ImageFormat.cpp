#include "preview/ImageFormat.h"

#include "preview/IsoMedia.h"
#include "preview/SvgFile.h"
#include "preview/TiffFile.h"

#include <algorithm>
#include <array>

namespace brevanholt::preview {
namespace {

using namespace std::string_view_literals;

// "BM" alone is ambiguous; also checks the size of the header.
bool isBmp(ByteSpan file) {
  constexpr std::array<std::uint32_t, 7> kHeaderSizes{12, 40, 52, 56, 64, 108, 124};
  return text(file).starts_with("BM") &&
         std::ranges::count(kHeaderSizes, littleEndian<std::uint32_t>(file, 14)) > 0;
}

bool isHeif(ByteSpan file) {
  constexpr std::array kBrands{"heic"sv, "heix"sv, "heim"sv, "heis"sv, "mif1"sv};
  return std::ranges::any_of(kBrands, [file](auto brand) { return hasBrand(file, brand); });
}

}  // namespace

std::optional<ImageFormat> formatOf(ByteSpan file) {
  const std::string_view start = text(file);
  if (start.starts_with("\xFF\xD8\xFF")) return ImageFormat::kJpeg;
  if (start.starts_with("\x89PNG\r\n\x1A\n")) return ImageFormat::kPng;
  if (start.starts_with("GIF87a") || start.starts_with("GIF89a")) return ImageFormat::kGif;
  if (start.starts_with("RIFF") && start.substr(0, 12).ends_with("WEBP")) return ImageFormat::kWebp;
  if (isBmp(file)) return ImageFormat::kBmp;
  if (hasBrand(file, "avif")) return ImageFormat::kAvif;
  if (isHeif(file)) return ImageFormat::kHeif;
  if (isTiff(file) && !isCameraRaw(file)) return ImageFormat::kTiff;
  if (isSvg(file)) return ImageFormat::kSvg;
  return std::nullopt;
}

}  // namespace brevanholt::preview
