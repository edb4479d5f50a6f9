#include "preview/BmpFile.h"
#include "preview/ExifOrientation.h"
#include "preview/ImageFormat.h"
#include "preview/IsoMedia.h"
#include "preview/PngFile.h"
#include "preview/TiffFile.h"

// What the host's child makes of a file before a decoder gets to see it.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace brevanholt::preview;
  const ByteSpan file(data, size);
  static_cast<void>(mostAnnouncedPixels(file));
  const auto format = formatOf(file);
  if (format) static_cast<void>(exifOrientation(*format, file));
  static_cast<void>(PngFile::parse(file));
  static_cast<void>(hasAlpha(file));
  static_cast<void>(withInfoHeader(file));
  return 0;
}
