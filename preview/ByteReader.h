#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace brevanholt::preview {

using ByteSpan = std::span<const std::uint8_t>;

// The part of `bytes` from `offset`, as far as there is one.
[[nodiscard]] inline ByteSpan from(ByteSpan bytes, std::uint64_t offset,
                                   std::uint64_t length = ~0ULL) {
  if (offset >= bytes.size()) return {};
  const auto rest = bytes.subspan(static_cast<std::size_t>(offset));
  return length < rest.size() ? rest.first(static_cast<std::size_t>(length)) : rest;
}

[[nodiscard]] inline std::string_view text(ByteSpan bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

// Bytes beyond the end count as zero.
[[nodiscard]] inline std::uint64_t byteAt(ByteSpan bytes, std::uint64_t offset) {
  return offset < bytes.size() ? bytes[static_cast<std::size_t>(offset)] : 0U;
}

// The integers at `offset`.
template <std::unsigned_integral T>
[[nodiscard]] T littleEndian(ByteSpan bytes, std::uint64_t offset) {
  std::uint64_t value = 0;
  for (std::size_t index = sizeof(T); index-- > 0;) {
    value = value << 8U | byteAt(bytes, offset + index);
  }
  return static_cast<T>(value);
}

template <std::unsigned_integral T>
[[nodiscard]] T bigEndian(ByteSpan bytes, std::uint64_t offset) {
  std::uint64_t value = 0;
  for (std::size_t index = 0; index < sizeof(T); ++index) {
    value = value << 8U | byteAt(bytes, offset + index);
  }
  return static_cast<T>(value);
}

}  // namespace brevanholt::preview
