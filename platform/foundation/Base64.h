#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace brevanholt::platform {

// Base64 in the standard alphabet, padded, without line breaks (RFC 4648, section 4).
[[nodiscard]] std::string toBase64(std::string_view bytes);
// Nothing where `text` is not exactly what toBase64() gives for some bytes.
[[nodiscard]] std::optional<std::string> fromBase64(const std::string& text);

}  // namespace brevanholt::platform
