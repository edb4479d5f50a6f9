#include "platform/foundation/Uuid.h"

#include <array>
#include <cctype>
#include <cstdint>
#include <cstdlib>

#include <sys/random.h>

namespace brevanholt::platform {
namespace {

constexpr std::size_t kTextLength = 36;

constexpr bool isHyphenPosition(std::size_t position) {
  return position == 8 || position == 13 || position == 18 || position == 23;
}

}  // namespace

std::string makeUuid() {
  std::array<std::uint8_t, 16> bytes{};
  // Requests of up to 256 bytes are never cut short.
  if (::getrandom(bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size())) {
    std::abort();
  }
  bytes[6] = static_cast<std::uint8_t>((bytes[6] & 0x0FU) | 0x40U);
  bytes[8] = static_cast<std::uint8_t>((bytes[8] & 0x3FU) | 0x80U);

  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string text;
  text.reserve(kTextLength);
  for (const std::uint8_t byte : bytes) {
    if (isHyphenPosition(text.size())) text += '-';
    text += kDigits[byte >> 4U];
    text += kDigits[byte & 0x0FU];
  }
  return text;
}

bool isUuid(std::string_view text) {
  if (text.size() != kTextLength) return false;
  for (std::size_t position = 0; position < text.size(); ++position) {
    const auto character = static_cast<unsigned char>(text[position]);
    if (isHyphenPosition(position) ? character != '-' : std::isxdigit(character) == 0) return false;
  }
  return true;
}

}  // namespace brevanholt::platform
