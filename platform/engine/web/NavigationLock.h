#pragma once

#include <webkit2/webkit2.h>

namespace brevanholt::platform {

// Keeps a view on the bundle: no page from elsewhere, no new windows, no downloads, no prompts for
// permissions, no printing. Only text fields have a context menu, unless developer tools are on.
void lockToBundle(WebKitWebView* view, bool developerTools);

// Refuses whatever would be saved to disk behind the host's back.
void refuseDownloads(WebKitWebContext* context);

}  // namespace brevanholt::platform
