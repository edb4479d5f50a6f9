#pragma once

#include "platform/desktop/Image.h"
#include "platform/linux/menu/Palette.h"
#include "platform/linux/tray/StatusNotifierItem.h"

#include <string>
#include <vector>

namespace brevanholt::platform {

// The image in the common sizes of trays, each square with the image in its middle, and a dot in a
// corner where something needs attention. A template and the dot take the colour given.
[[nodiscard]] std::vector<TrayPixmap> trayPixmaps(const Image& image,
                                                  const std::string& applicationIcon,
                                                  const Rgba& color, bool needsAttention);

}  // namespace brevanholt::platform
