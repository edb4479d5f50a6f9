#include "preview/TiffFile.h"

namespace brevanholt::preview {
namespace {

using namespace std::string_view_literals;

constexpr std::size_t kEntrySize = 12;

enum Tag : std::uint16_t {
  kNewSubfileType = 254,
  kPhotometricInterpretation = 262,
  kOrientation = 274,
  kExtraSamples = 338,
  kDngVersion = 50706,
};

// What kExtraSamples says of the first sample beyond the colours.
enum ExtraSample : std::uint16_t { kAssociatedAlpha = 1, kUnassociatedAlpha = 2 };

// What is behind kPhotometricInterpretation in raw files (DNG specification 1.4).
enum Photometric : std::uint16_t { kColorFilterArray = 32803, kLinearRaw = 34892 };

// The integers of a file in the byte order that the file has.
class TiffReader {
 public:
  explicit TiffReader(ByteSpan file) : file_(file), isBig_(text(file).starts_with('M')) {}

  template <std::unsigned_integral T>
  [[nodiscard]] T at(std::uint64_t offset) const {
    return isBig_ ? bigEndian<T>(file_, offset) : littleEndian<T>(file_, offset);
  }

 private:
  ByteSpan file_;
  bool isBig_;
};

// Whether `is` holds for any entry of the first directory, given by its offset.
template <class Condition>
bool anyEntry(const TiffReader& tiff, Condition is) {
  const std::uint64_t directory = tiff.at<std::uint32_t>(4);
  const auto count = tiff.at<std::uint16_t>(directory);
  for (std::uint64_t index = 0; index < count; ++index) {
    if (is(directory + 2 + index * kEntrySize)) return true;
  }
  return false;
}

// The first 16-bit value of a tag in the first directory; zero where it is missing.
unsigned shortValue(const TiffReader& tiff, Tag tag) {
  unsigned value = 0;
  anyEntry(tiff, [&](std::uint64_t entry) {
    const bool isFound = tiff.at<std::uint16_t>(entry) == tag;
    if (isFound) value = tiff.at<std::uint16_t>(entry + 8);
    return isFound;
  });
  return value;
}

bool marksRaw(const TiffReader& tiff, std::uint64_t entry) {
  const std::uint64_t value = entry + 8;
  switch (tiff.at<std::uint16_t>(entry)) {
    case kNewSubfileType:
      return (tiff.at<std::uint32_t>(value) & 1U) != 0;
    case kPhotometricInterpretation: {
      const auto interpretation = tiff.at<std::uint16_t>(value);
      return interpretation == kColorFilterArray || interpretation == kLinearRaw;
    }
    case kDngVersion:
      return true;
    default:
      return false;
  }
}

}  // namespace

bool isTiff(ByteSpan file) {
  const auto start = text(from(file, 0, 4));
  return start == "II*\0"sv || start == "MM\0*"sv;
}

bool isCameraRaw(ByteSpan tiff) {
  if (text(from(tiff, 8, 2)) == "CR") return true;
  const TiffReader reader(tiff);
  return anyEntry(reader, [&reader](std::uint64_t entry) { return marksRaw(reader, entry); });
}

unsigned tiffOrientation(ByteSpan tiff) {
  return isTiff(tiff) ? shortValue(TiffReader(tiff), kOrientation) : 0U;
}

bool hasAlpha(ByteSpan tiff) {
  const unsigned kind = shortValue(TiffReader(tiff), kExtraSamples);
  return kind == kAssociatedAlpha || kind == kUnassociatedAlpha;
}

}  // namespace brevanholt::preview
