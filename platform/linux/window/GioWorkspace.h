#pragma once

#include "platform/desktop/Workspace.h"
#include "platform/linux/bus/Bus.h"

namespace brevanholt::platform {

// Default programs by GIO (in a sandbox it asks the portal), and the file manager by
// org.freedesktop.FileManager1.
class GioWorkspace final : public Workspace {
 public:
  explicit GioWorkspace(Bus& sessionBus) : sessionBus_(sessionBus) {}

  void openUrl(const std::string& url, Callback callback) override;
  void openFile(const std::filesystem::path& path, Callback callback) override;
  void reveal(const std::filesystem::path& path) override;

 private:
  Bus& sessionBus_;
  Lifetime lifetime_;
};

}  // namespace brevanholt::platform
