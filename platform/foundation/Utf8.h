#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace brevanholt::platform {

// The code point at `position`, which moves past it; negative for an ill-formed sequence.
[[nodiscard]] std::int32_t nextCodePoint(std::string_view text, std::size_t& position);

// Whether `text` is well-formed UTF-8 (RFC 3629: no surrogates, no overlong forms).
[[nodiscard]] bool isValidUtf8(std::string_view text);

// `text` with each ill-formed sequence replaced by U+FFFD.
[[nodiscard]] std::string repairedUtf8(std::string_view text);

}  // namespace brevanholt::platform
