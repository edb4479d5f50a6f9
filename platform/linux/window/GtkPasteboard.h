#pragma once

#include "platform/desktop/Pasteboard.h"

namespace brevanholt::platform {

// The CLIPBOARD selection. A clipboard manager, where one runs, keeps the text when the program
// ends.
class GtkPasteboard final : public Pasteboard {
 public:
  [[nodiscard]] bool setText(const std::string& text) override;
};

}  // namespace brevanholt::platform
