#include "platform/foundation/Utf8.h"

#include <unicode/utf8.h>

#include <cstdint>
#include <cstring>

namespace brevanholt::platform {
namespace {

// The length of the run of ASCII at the front: most text is nothing else.
std::size_t asciiPrefix(std::string_view text) {
  std::size_t length = 0;
  for (std::uint64_t word; length + sizeof(word) <= text.size(); length += sizeof(word)) {
    std::memcpy(&word, text.data() + length, sizeof(word));
    if ((word & 0x8080808080808080U) != 0) break;
  }
  while (length < text.size() && static_cast<signed char>(text[length]) >= 0) ++length;
  return length;
}

}  // namespace

std::int32_t nextCodePoint(std::string_view text, std::size_t& position) {
  const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
  UChar32 codePoint;
  U8_NEXT(bytes, position, text.size(), codePoint);
  return codePoint;
}

bool isValidUtf8(std::string_view text) {
  for (;;) {
    text.remove_prefix(asciiPrefix(text));
    if (text.empty()) return true;
    std::size_t position = 0;
    if (nextCodePoint(text, position) < 0) return false;
    text.remove_prefix(position);
  }
}

std::string repairedUtf8(std::string_view text) {
  std::string repaired;
  repaired.reserve(text.size());
  for (std::size_t position = 0; position < text.size();) {
    const std::size_t start = position;
    const bool isWellFormed = nextCodePoint(text, position) >= 0;
    repaired += isWellFormed ? text.substr(start, position - start) : "\xEF\xBF\xBD";
  }
  return repaired;
}

}  // namespace brevanholt::platform
