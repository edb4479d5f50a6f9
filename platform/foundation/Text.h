#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace brevanholt::platform {

// `text` without the white space and newlines at its ends: the Unicode categories Zs, Zl and Zp,
// U+0009 to U+000D and U+0085.
[[nodiscard]] std::string trimmed(std::string_view text);

// Where each user-perceived character ends (extended grapheme clusters, UAX #29).
[[nodiscard]] std::vector<std::size_t> characterEnds(std::string_view text);

// The number of user-perceived characters.
[[nodiscard]] std::size_t characterCount(std::string_view text);

// `text` with each NUL replaced by U+FFFD, for what takes C strings and would cut it there.
[[nodiscard]] std::string withoutNuls(std::string_view text);

// The longest beginning of `text` that takes at most `mostBytes` bytes and ends where a
// user-perceived character ends.
[[nodiscard]] std::string_view fittedTo(std::size_t mostBytes, std::string_view text);

}  // namespace brevanholt::platform
