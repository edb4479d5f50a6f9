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
  // Answers with the chosen items in the panel's order, or with nothing when it was cancelled.
  // Every item exists, is of the kind asked for, and has a UTF-8 name; a choice that does not fit
  // is left out and the user is told. Requests made while a panel is open wait for it.
  virtual void choose(Choice choice, Callback callback) = 0;
};

}  // namespace brevanholt::platform
