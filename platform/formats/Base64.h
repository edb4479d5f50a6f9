#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace brevanholt::platform {

// Base64 in the standard alphabet, padded, without line breaks (RFC 4648, section 4). Text is
// std::string, or SecretText where it is about a secret: nothing else keeps a copy.
template <class Text = std::string>
[[nodiscard]] Text toBase64(std::string_view bytes);
// Nothing where `text` is not exactly what toBase64() gives for some bytes.
template <class Text = std::string>
[[nodiscard]] std::optional<Text> fromBase64(std::string_view text);

}  // namespace brevanholt::platform
