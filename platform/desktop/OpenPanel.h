#pragma once

#include "platform/foundation/UniqueFunction.h"

#include <filesystem>
#include <vector>

namespace brevanholt::platform {

// The desktop's panel in which the user chooses what to open, shown over the main window.
class OpenPanel {
 public:
  enum class Choice { kFiles, kFolder };  // any number of files, or one folder
  using Locations = std::vector<std::filesystem::path>;
  using Callback = UniqueFunction<void(Locations chosen)>;

  virtual ~OpenPanel() = default;
  // Answers with what was chosen, in the panel's order; with nothing when it was cancelled. What is
  // answered exists, is of the kind asked for, and has a name that is UTF-8; the user is told of
  // what was chosen and is not. Panels
  // that are asked for while one is open are shown one after another.
  virtual void choose(Choice choice, Callback callback) = 0;
};

}  // namespace brevanholt::platform
