#include "preview/ExifOrientation.h"

#include "preview/TiffFile.h"

namespace brevanholt::preview {
namespace {

using namespace std::string_view_literals;

constexpr auto kExifPrefix = "Exif\0\0"sv;  // which some writers put before the block

// The chunk "eXIf", wherever it stands (PNG specification, third edition, 11.3.3.6).
ByteSpan exifInPng(ByteSpan file) {
  for (std::uint64_t offset = 8; offset + 8 <= file.size();) {
    const std::uint64_t length = bigEndian<std::uint32_t>(file, offset);
    if (text(from(file, offset + 4, 4)) == "eXIf") return from(file, offset + 8, length);
    offset += 12 + length;
  }
  return {};
}

// The chunk "EXIF" of the container (WebP Container Specification).
ByteSpan exifInWebp(ByteSpan file) {
  for (std::uint64_t offset = 12; offset + 8 <= file.size();) {
    const std::uint64_t length = littleEndian<std::uint32_t>(file, offset + 4);
    if (text(from(file, offset, 4)) == "EXIF") return from(file, offset + 8, length);
    offset += 8 + length + length % 2;
  }
  return {};
}

ByteSpan exifIn(ImageFormat format, ByteSpan file) {
  if (format == ImageFormat::kPng) return exifInPng(file);
  if (format == ImageFormat::kWebp) return exifInWebp(file);
  return {};
}

}  // namespace

unsigned exifOrientation(ImageFormat format, ByteSpan file) {
  ByteSpan exif = exifIn(format, file);
  if (text(exif).starts_with(kExifPrefix)) exif = from(exif, kExifPrefix.size());
  const unsigned orientation = tiffOrientation(exif);
  return orientation <= 8 ? orientation : 0;
}

}  // namespace brevanholt::preview
