#pragma once

#include <string_view>

namespace brevanholt {

// Whether a token is a literal, a number or a string by the grammar of RFC 8259. The value does not
// matter: a number may be out of range, and an escape may be half of a surrogate pair.
[[nodiscard]] bool isJsonScalar(std::string_view token);

// The same for the text between the quotation marks of a string.
[[nodiscard]] bool isJsonStringContent(std::string_view content);

}  // namespace brevanholt
