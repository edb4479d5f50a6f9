#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace brevanholt::platform {

// Text of strangers, made fit to be shown beside other text.

// `text` with each control character, tab and line break replaced by a space.
[[nodiscard]] std::string onOneLine(std::string_view text);

// `text` so that its direction changes nothing beside it (UAX #9): what it opens is closed, and
// where it has characters that set a direction it stands in an isolate. Other text is returned as
// it is.
[[nodiscard]] std::string directionIsolated(std::string_view text);

enum class Cut { kTail, kMiddle };

// `text` in at most `columns` columns, of which a wide character takes two: the rest is left out at
// the end or in the middle, between user-perceived characters, and an ellipsis stands there.
[[nodiscard]] std::string cutToColumns(std::string_view text, std::size_t columns, Cut cut);

}  // namespace brevanholt::platform
