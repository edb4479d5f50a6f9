#pragma once

#include "platform/foundation/PlatformError.h"

#include <string>

namespace brevanholt {

// The words with which `action` is refused, or "not refused".
template <class F>
std::string refusalOf(F action) {
  try {
    static_cast<void>(action());
    return "not refused";
  } catch (const platform::PlatformError& error) {
    return error.message();
  }
}

}  // namespace brevanholt
