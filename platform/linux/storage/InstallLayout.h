#pragma once

#include <filesystem>

namespace brevanholt::platform {

// Where the program's own files are, relative to its executable: the same in the build tree and
// wherever it is installed.
struct InstallLayout {
  std::filesystem::path executable;
  std::filesystem::path uiBundle;           // lib/brevanholt/ui-bundle where that is, or
                                            // share/brevanholt/ui
  std::filesystem::path webExtensions;      // lib/brevanholt/web-extensions
  std::filesystem::path previewChild;       // lib/brevanholt/brevanholt-preview
  std::filesystem::path privateFrameworks;  // share/brevanholt/Frameworks
  std::filesystem::path icons;              // share/icons
  std::filesystem::path help;               // share/brevanholt/help, by language

  static InstallLayout ofThisProcess();
};

}  // namespace brevanholt::platform
