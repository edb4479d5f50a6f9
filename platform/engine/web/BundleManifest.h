#pragma once

#include "platform/engine/BundleNeeds.h"

namespace brevanholt::platform {

// What the file bundle.json of a bundle says (docs/engine.md). A bundle without one needs nothing;
// neither does one whose manifest cannot be read, which is logged.
[[nodiscard]] BundleNeeds readBundleManifest(const std::filesystem::path& bundle);

}  // namespace brevanholt::platform
