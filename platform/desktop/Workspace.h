#pragma once

#include "platform/foundation/Result.h"
#include "platform/foundation/UniqueFunction.h"

#include <filesystem>
#include <string>

namespace brevanholt::platform {

// Hands things to the desktop's other programs.
class Workspace {
 public:
  using Callback = UniqueFunction<void(Result<Done>)>;

  virtual ~Workspace() = default;
  // Opens a link with its default program; fails where there is none or it cannot be started.
  virtual void openUrl(const std::string& url, Callback callback) = 0;
  // Opens a file or folder with its default program; fails likewise.
  virtual void openFile(const std::filesystem::path& path, Callback callback) = 0;
  // Shows the item selected in the file manager, or at least its folder.
  virtual void reveal(const std::filesystem::path& path) = 0;
};

}  // namespace brevanholt::platform
