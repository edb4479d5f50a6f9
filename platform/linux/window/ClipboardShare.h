#pragma once

#include "platform/desktop/Application.h"

#include <filesystem>
#include <functional>

namespace brevanholt::platform {

// What is on the clipboard, as something to share: the files that were copied, else a picture, else
// a text. A picture is saved as a PNG in a folder of its own below `folder`. The callback runs
// later, and not at all where there is nothing.
void readClipboard(std::filesystem::path folder,
                   std::function<void(const ServicePasteboard&)> callback);

}  // namespace brevanholt::platform
