#pragma once

#include <webkit2/webkit2.h>

#include <filesystem>

namespace brevanholt::platform {

// Has the context start its pages' processes in WebKit's sandbox: namespaces of their own, without
// a network and with little of the file system, and a filter of system calls. `readable` is what
// they need beside the system's libraries. Before the context's first page.
//
// Where bubblewrap does not work the log says so, and the pages' processes have none: WebKit would
// end this process. In a Flatpak, where bubblewrap cannot work, they have that of the Flatpak.
void sandboxPages(WebKitWebContext* context, const std::filesystem::path& readable,
                  bool isInFlatpak);

}  // namespace brevanholt::platform
