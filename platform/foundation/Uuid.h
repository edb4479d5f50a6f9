#pragma once

#include <string>
#include <string_view>

namespace brevanholt::platform {

// A fresh random UUID (RFC 4122, version 4) in its canonical form in upper case, 36 characters.
[[nodiscard]] std::string makeUuid();

// Whether `text` is a UUID: 8-4-4-4-12 hexadecimal digits of either case, and nothing else.
[[nodiscard]] bool isUuid(std::string_view text);

}  // namespace brevanholt::platform
