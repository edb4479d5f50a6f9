#include "platform/linux/storage/InstallLayout.h"

namespace brevanholt::platform {

InstallLayout InstallLayout::ofThisProcess() {
  const auto executable = std::filesystem::read_symlink("/proc/self/exe");
  const auto prefix = executable.parent_path().parent_path();
  return {.executable = executable,
          .uiBundle = prefix / "share/brevanholt/ui",
          .webExtensions = prefix / "lib/brevanholt/web-extensions",
          .previewChild = prefix / "lib/brevanholt/brevanholt-preview",
          .privateFrameworks = prefix / "share/brevanholt/Frameworks",
          .icons = prefix / "share/icons",
          .help = prefix / "share/brevanholt/help"};
}

}  // namespace brevanholt::platform
