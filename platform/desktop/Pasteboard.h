#pragma once

#include <string>

namespace brevanholt::platform {

// The desktop's clipboard.
class Pasteboard {
 public:
  virtual ~Pasteboard() = default;
  // Replaces what is there. False where the desktop refuses.
  [[nodiscard]] virtual bool setText(const std::string& text) = 0;
};

}  // namespace brevanholt::platform
