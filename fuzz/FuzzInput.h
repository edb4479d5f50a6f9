#pragma once

#include "platform/foundation/Bytes.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace brevanholt::fuzz {

// The fuzzer's bytes in a block of their own, so that reading past their end is seen.
inline platform::Bytes input(const std::uint8_t* data, std::size_t size) {
  return platform::Bytes(std::vector<std::uint8_t>(data, data + size));
}

}  // namespace brevanholt::fuzz
