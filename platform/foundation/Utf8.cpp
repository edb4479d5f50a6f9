#include "platform/foundation/Utf8.h"

#include <unicode/utf8.h>

#include <cstdint>
#include <cstring>

namespace brevanholt::platform {
namespace {

// The length of the run of ASCII at the front, to a multiple of eight: most text is nothing else.
std::size_t asciiPrefix(std::string_view text) {
  std::size_t length = 0;
  while (length + sizeof(std::uint64_t) <= text.size()) {
    std::uint64_t word;
    std::memcpy(&word, text.data() + length, sizeof(word));
    if ((word & 0x8080808080808080U) != 0) break;
    length += sizeof(word);
  }
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
  while (!text.empty()) {
    text.remove_prefix(asciiPrefix(text));
    // A few code points on, there may be ASCII again.
    for (int step = 0; step < 8 && !text.empty(); ++step) {
      std::size_t position = 0;
      if (nextCodePoint(text, position) < 0) return false;
      text.remove_prefix(position);
    }
  }
  return true;
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
