#pragma once

#include <string>

namespace brevanholt::platform {

// What the build says of this program. Empty where it says nothing.
struct BundleInfo {
  std::string shortVersion;
  std::string buildNumber;
};

}  // namespace brevanholt::platform
