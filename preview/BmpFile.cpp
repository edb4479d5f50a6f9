#include "preview/BmpFile.h"

#include <algorithm>

namespace brevanholt::preview {
namespace {

constexpr std::uint32_t kFileHeader = 14;
constexpr std::uint32_t kCoreHeader = 12;
constexpr std::uint32_t kInfoHeader = 40;

template <std::unsigned_integral T>
void append(std::vector<std::uint8_t>& bytes, T value) {
  for (std::size_t index = 0; index < sizeof(T); ++index) {
    bytes.push_back(static_cast<std::uint8_t>(std::uint64_t{value} >> (8 * index)));
  }
}

}  // namespace

std::optional<std::vector<std::uint8_t>> withInfoHeader(ByteSpan file) {
  if (!text(file).starts_with("BM") || littleEndian<std::uint32_t>(file, 14) != kCoreHeader) {
    return std::nullopt;
  }
  const auto bits = littleEndian<std::uint16_t>(file, 24);
  const std::uint64_t pixels = littleEndian<std::uint32_t>(file, 10);
  if (bits > 8 || pixels < kFileHeader + kCoreHeader || pixels > file.size()) return std::nullopt;
  // The palette has three bytes a colour, and may be shorter than the depth allows.
  const auto colors = static_cast<std::uint32_t>(
      std::min<std::uint64_t>((pixels - kFileHeader - kCoreHeader) / 3, 1U << bits));

  std::vector<std::uint8_t> bytes{'B', 'M'};
  const std::uint32_t newPixels = kFileHeader + kInfoHeader + colors * 4;
  append(bytes, static_cast<std::uint32_t>(newPixels + (file.size() - pixels)));
  append(bytes, std::uint32_t{0});
  append(bytes, newPixels);
  append(bytes, kInfoHeader);
  append(bytes, std::uint32_t{littleEndian<std::uint16_t>(file, 18)});  // width
  append(bytes, std::uint32_t{littleEndian<std::uint16_t>(file, 20)});  // height
  append(bytes, std::uint16_t{1});
  append(bytes, bits);
  for (int field = 0; field < 4; ++field) append(bytes, std::uint32_t{0});
  append(bytes, colors);
  append(bytes, std::uint32_t{0});
  for (std::uint64_t color = 0; color < colors; ++color) {
    const ByteSpan entry = from(file, kFileHeader + kCoreHeader + color * 3, 3);
    bytes.insert(bytes.end(), entry.begin(), entry.end());
    bytes.push_back(0);
  }
  const ByteSpan rest = from(file, pixels);
  bytes.insert(bytes.end(), rest.begin(), rest.end());
  return bytes;
}

}  // namespace brevanholt::preview
