#pragma once

#include "platform/desktop/View.h"

#include <string>

namespace brevanholt::platform {

// Says how a view is built, leaving out its texts, its values and the colours of its dots. Two
// views with the same structure can be shown by the same widgets.
[[nodiscard]] std::string structureOf(const FixedView& view);

}  // namespace brevanholt::platform
