#pragma once

#include "platform/linux/portal/PortalRequest.h"
#include "platform/linux/window/GioWorkspace.h"

#include <memory>

namespace brevanholt::platform {

// The desktop's other programs, reached from a sandbox. GIO itself asks the portal to open links
// and files there; the file manager is asked by org.freedesktop.portal.OpenURI.OpenDirectory.
class PortalWorkspace final : public Workspace {
 public:
  explicit PortalWorkspace(Bus& sessionBus) : sessionBus_(sessionBus), gio_(sessionBus) {}

  void openUrl(const std::string& url, Callback callback) override;
  void openFile(const std::filesystem::path& path, Callback callback) override;
  void reveal(const std::filesystem::path& path) override;

 private:
  Bus& sessionBus_;
  GioWorkspace gio_;
  std::unique_ptr<PortalRequest> revealing_;
};

}  // namespace brevanholt::platform
