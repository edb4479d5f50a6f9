#pragma once

namespace brevanholt::platform {

// The private scheme under which the UI bundle is served, and the origin of every page of it.
inline constexpr const char* kBundleScheme = "brevanholt-ui";
inline constexpr const char* kBundleOrigin = "brevanholt-ui://bundle/";

}  // namespace brevanholt::platform
