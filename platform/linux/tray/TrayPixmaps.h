#pragma once

#include "platform/desktop/Image.h"
#include "platform/linux/menu/Palette.h"
#include "platform/linux/tray/StatusNotifierItem.h"

#include <string>
#include <vector>

namespace brevanholt::platform {

// The image in the common sizes of trays, each square with the image in its middle. A template
// takes the colour given.
[[nodiscard]] std::vector<TrayPixmap> trayPixmaps(const Image& image,
                                                  const std::string& applicationIcon,
                                                  const Rgba& color);

}  // namespace brevanholt::platform
