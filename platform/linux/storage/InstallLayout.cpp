#include "platform/linux/storage/InstallLayout.h"

namespace brevanholt::platform {

InstallLayout InstallLayout::ofThisProcess() {
  const auto executable = std::filesystem::read_symlink("/proc/self/exe");
  const auto prefix = executable.parent_path().parent_path();
  // A link counts even where it leads nowhere: then starting says so.
  const auto chosen = prefix / "lib/brevanholt/ui-bundle";
  std::error_code error;
  const bool isChosen = std::filesystem::symlink_status(chosen, error).type() !=
                        std::filesystem::file_type::not_found;
  return {.executable = executable,
          .uiBundle = isChosen ? chosen : prefix / "share/brevanholt/ui",
          .webExtensions = prefix / "lib/brevanholt/web-extensions",
          .previewChild = prefix / "lib/brevanholt/brevanholt-preview",
          .privateFrameworks = prefix / "share/brevanholt/Frameworks",
          .icons = prefix / "share/icons",
          .help = prefix / "share/brevanholt/help"};
}

}  // namespace brevanholt::platform
