#include "preview/ImageFormat.h"

#include "preview/IsoMedia.h"
#include "preview/PngFile.h"
#include "preview/SvgFile.h"
#include "preview/TiffFile.h"

#include <algorithm>
#include <array>

namespace brevanholt::preview {
namespace {

using namespace std::string_view_literals;

// Two letters begin many a text, so the header must be of a size that there is.
bool isBmp(ByteSpan file) {
  constexpr std::array<std::uint32_t, 7> kHeaderSizes{12, 40, 52, 56, 64, 108, 124};
  return text(file).starts_with("BM") &&
         std::ranges::count(kHeaderSizes, littleEndian<std::uint32_t>(file, 14)) > 0;
}

bool isHeif(ByteSpan file) {
  constexpr std::array kBrands{"heic"sv, "heix"sv, "heim"sv, "heis"sv, "mif1"sv};
  return std::ranges::any_of(kBrands, [file](auto brand) { return hasBrand(file, brand); });
}

bool goesToItsEndMarker(ByteSpan jpeg) {
  const std::string_view file = text(jpeg);
  std::size_t position = 2;
  for (;;) {
    position = file.find('\xFF', position);
    if (position == std::string_view::npos || position + 1 >= file.size()) return false;
    const std::uint8_t marker = jpeg[position + 1];
    if (marker == 0xD9) return true;
    if (marker == 0xFF) {  // fill bytes may come before a marker
      ++position;
    } else if (marker <= 0x01 || (marker >= 0xD0 && marker <= 0xD8)) {
      position += 2;  // nothing belongs to it
    } else {
      position += 2U + bigEndian<std::uint16_t>(jpeg, position + 2);
    }
  }
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

bool isWhole(ImageFormat format, ByteSpan file) {
  switch (format) {
    case ImageFormat::kJpeg:
      return goesToItsEndMarker(file);
    case ImageFormat::kPng:
      return PngFile::parse(file).has_value();
    case ImageFormat::kBmp:
      return littleEndian<std::uint32_t>(file, 2) <= file.size();
    case ImageFormat::kWebp:
      return littleEndian<std::uint32_t>(file, 4) + std::uint64_t{8} <= file.size();
    default:
      return true;
  }
}

}  // namespace brevanholt::preview
