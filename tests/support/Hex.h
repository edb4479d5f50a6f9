#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace brevanholt {

// Bytes from hexadecimal digits, as published test vectors are printed: white space is skipped.
inline std::vector<std::uint8_t> fromHex(std::string_view text) {
  std::string digits;
  for (const char character : text) {
    if (character != ' ' && character != '\n') digits += character;
  }
  std::vector<std::uint8_t> bytes;
  for (std::size_t at = 0; at < digits.size(); at += 2) {
    bytes.push_back(static_cast<std::uint8_t>(std::stoi(digits.substr(at, 2), nullptr, 16)));
  }
  return bytes;
}

inline std::string toHex(std::span<const std::uint8_t> bytes) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string text;
  for (const std::uint8_t byte : bytes) {
    text += kDigits[byte >> 4U];
    text += kDigits[byte & 0x0FU];
  }
  return text;
}

}  // namespace brevanholt
