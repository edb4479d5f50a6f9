#include "preview/IsoMedia.h"

#include <algorithm>
#include <optional>

namespace brevanholt::preview {
namespace {

constexpr std::size_t kFullBoxHeader = 4;  // version and flags

struct Box {
  std::string_view type;
  ByteSpan content;
};

// The box that `rest` begins with, which is then what follows it.
std::optional<Box> takeBox(ByteSpan& rest) {
  if (rest.size() < 8) return std::nullopt;
  std::uint64_t header = 8;
  std::uint64_t size = bigEndian<std::uint32_t>(rest, 0);
  if (size == 0) size = rest.size();
  if (size == 1) {
    header = 16;
    size = bigEndian<std::uint64_t>(rest, 8);
  }
  if (size < header) return std::nullopt;
  const Box box{text(from(rest, 4, 4)), from(rest, header, size - header)};
  rest = from(rest, size);
  return box;
}

// What the first box of that type holds; nothing where there is none.
ByteSpan contentOf(ByteSpan boxes, std::string_view type) {
  while (const auto box = takeBox(boxes)) {
    if (box->type == type) return box->content;
  }
  return {};
}

}  // namespace

bool hasBrand(ByteSpan file, std::string_view brand) {
  const auto type = takeBox(file);
  if (!type || type->type != "ftyp") return false;
  for (std::size_t offset = 0; offset + 4 <= type->content.size(); offset += 4) {
    const bool isVersion = offset == 4;  // between the major brand and the others
    if (!isVersion && text(from(type->content, offset, 4)) == brand) return true;
  }
  return false;
}

std::uint64_t mostAnnouncedPixels(ByteSpan file) {
  const ByteSpan meta = from(contentOf(file, "meta"), kFullBoxHeader);
  ByteSpan properties = contentOf(contentOf(meta, "iprp"), "ipco");
  std::uint64_t most = 0;
  while (const auto box = takeBox(properties)) {
    if (box->type != "ispe") continue;
    const std::uint64_t width = bigEndian<std::uint32_t>(box->content, kFullBoxHeader);
    most = std::max(most, width * bigEndian<std::uint32_t>(box->content, kFullBoxHeader + 4));
  }
  return most;
}

}  // namespace brevanholt::preview
