#pragma once

#include <filesystem>
#include <string>

namespace brevanholt::platform {

// What the build says of this program. Empty where it says nothing.
struct BundleInfo {
  std::string shortVersion;
  std::string buildNumber;
  std::filesystem::path privateFrameworks;  // where the engine's packaged assets are
};

}  // namespace brevanholt::platform
