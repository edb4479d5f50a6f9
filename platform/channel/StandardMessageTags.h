#pragma once

#include <bit>
#include <cstdint>

namespace brevanholt::platform {

static_assert(std::endian::native == std::endian::little, "messages hold numbers as memory does");

enum StandardMessageTag : std::uint8_t {
  kNullTag = 0,
  kTrueTag = 1,
  kFalseTag = 2,
  kInt32Tag = 3,
  kInt64Tag = 4,
  kLargeIntTag = 5,  // a hexadecimal string; obsolete, never written, refused when read
  kFloat64Tag = 6,
  kStringTag = 7,
  kBytesTag = 8,
  kInt32ListTag = 9,
  kInt64ListTag = 10,
  kFloat64ListTag = 11,
  kListTag = 12,
  kMapTag = 13,
  kFloat32ListTag = 14,
};

// A size below 254 is one byte; these announce two or four bytes that follow.
inline constexpr std::uint8_t kSize16 = 254;
inline constexpr std::uint8_t kSize32 = 255;

}  // namespace brevanholt::platform
