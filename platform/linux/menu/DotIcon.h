#pragma once

#include "platform/desktop/Color.h"

#include <cstdint>
#include <vector>

namespace brevanholt::platform {

// A small dot of a colour as a PNG, drawn once. The shade shows on light and on dark menus.
[[nodiscard]] const std::vector<std::uint8_t>& dotIcon(SystemColor color);

}  // namespace brevanholt::platform
