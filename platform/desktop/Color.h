#pragma once

namespace brevanholt::platform {

// A colour by what it is for; the desktop's theme says what it looks like.
enum class SystemColor { kLabel, kSecondaryLabel, kTertiaryLabel, kGreen, kRed, kBlue };

}  // namespace brevanholt::platform
