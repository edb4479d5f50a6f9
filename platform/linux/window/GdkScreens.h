#pragma once

#include "platform/desktop/Screen.h"

namespace brevanholt::platform {

// GDK's monitors. Wayland has no primary one; its first stands in.
class GdkScreens final : public Screen {
 public:
  [[nodiscard]] std::optional<double> mainScaleFactor() const override;
};

}  // namespace brevanholt::platform
