#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace brevanholt::platform {

// `text` without the white space and newlines at its ends: the Unicode categories Zs, Zl and Zp,
// U+0009 to U+000D and U+0085.
[[nodiscard]] std::string trimmed(std::string_view text);

// The number of user-perceived characters (extended grapheme clusters, UAX #29).
[[nodiscard]] std::size_t characterCount(std::string_view text);

}  // namespace brevanholt::platform
