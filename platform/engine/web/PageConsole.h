#pragma once

#include <webkit2/webkit2.h>

namespace brevanholt::platform {

// Writes what the page says on its console, and the errors that nothing in it catches, to the
// standard error of this program. For authors of bundles: it puts an object into the page. To be
// called before a page loads.
void showPageConsole(WebKitWebView* view);

}  // namespace brevanholt::platform
