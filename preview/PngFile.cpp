#include "preview/PngFile.h"

namespace brevanholt::preview {
namespace {

constexpr std::string_view kSignature = "\x89PNG\r\n\x1A\n";
constexpr std::size_t kAroundChunk = 12;  // its length and type before, its checksum after

}  // namespace

std::optional<PngFile> PngFile::parseHeader(ByteSpan bytes) {
  if (!text(bytes).starts_with(kSignature)) return std::nullopt;
  constexpr std::uint64_t kHeader = kSignature.size();
  if (text(from(bytes, kHeader + 4, 4)) != "IHDR") return std::nullopt;
  return PngFile{.width = bigEndian<std::uint32_t>(bytes, kHeader + 8),
                 .height = bigEndian<std::uint32_t>(bytes, kHeader + 12)};
}

std::optional<PngFile> PngFile::parse(ByteSpan bytes) {
  const auto header = parseHeader(bytes);
  if (!header) return std::nullopt;
  PngFile file = *header;
  std::uint64_t offset = kSignature.size();
  while (offset + kAroundChunk <= bytes.size()) {
    const bool isLast = text(from(bytes, offset + 4, 4)) == "IEND";
    offset += kAroundChunk + bigEndian<std::uint32_t>(bytes, offset);
    if (!isLast) continue;
    file.length = static_cast<std::size_t>(offset);
    return offset <= bytes.size() ? std::optional(file) : std::nullopt;
  }
  return std::nullopt;
}

}  // namespace brevanholt::preview
