#pragma once

#include <optional>

namespace brevanholt::platform {

// The screens of this desktop.
class Screen {
 public:
  virtual ~Screen() = default;
  // Pixels for each point of the main screen; nothing where there is none.
  [[nodiscard]] virtual std::optional<double> mainScaleFactor() const = 0;
};

}  // namespace brevanholt::platform
