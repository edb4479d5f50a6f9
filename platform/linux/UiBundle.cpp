#include "platform/linux/UiBundle.h"

#include "platform/engine/flutter/FlutterEngine.h"
#include "platform/engine/web/WebEngine.h"
#include "platform/foundation/Log.h"
#include "platform/foundation/PlatformError.h"
#include "platform/linux/portal/Flatpak.h"

#include <glib.h>

namespace brevanholt::platform {
namespace {

namespace fs = std::filesystem;

// Applications look for assets where they are on another system: below the application's private
// frameworks. The session's folder of the program gets a link in that place.
fs::path frameworksFor(const FlutterBundle& bundle) {
  fs::path frameworks = fs::path(g_get_user_runtime_dir()) / "brevanholt/Frameworks";
  const fs::path resources = frameworks / "App.framework/Resources";
  fs::create_directories(resources);
  fs::remove(resources / "flutter_assets");
  fs::create_directory_symlink(bundle.assets, resources / "flutter_assets");
  return frameworks;
}

}  // namespace

UiBundle::UiBundle(const LaunchOptions& options, const InstallLayout& layout)
    : folder_(fs::absolute(options.uiBundle.empty() ? layout.uiBundle : options.uiBundle)),
      frameworks_(layout.privateFrameworks) {
  const FlutterBundle flutter(folder_);
  std::error_code error;
  isFlutter_ = flutter.isThere();
  if (!isFlutter_ && fs::is_regular_file(folder_ / "index.html", error)) return;
  if (!isFlutter_) {
    throw PlatformError("“" + folder_.string() +
                        "” holds no user interface: it has neither index.html nor "
                        "lib/libflutter_linux_gtk.so with data/flutter_assets");
  }
  if (!fs::is_regular_file(flutter.assets / "assets/images/brevanholt_logo.png", error)) return;
  try {
    frameworks_ = frameworksFor(flutter);
  } catch (const fs::filesystem_error& failure) {
    logWarning(std::string("the bundle's logo is not used: ") + failure.what());
  }
}

RunningUi UiBundle::makeEngine(const LaunchOptions& options, const InstallLayout& layout,
                               MainQueue& mainQueue) const {
  if (isFlutter_) {
    return {.engine = std::make_unique<FlutterEngine>(FlutterBundle(folder_), options.uiArguments)};
  }
  auto engine =
      std::make_unique<WebEngine>(WebEngineOptions{.uiBundle = folder_,
                                                   .keepsBundle = options.uiBundle.empty(),
                                                   .webExtensions = layout.webExtensions,
                                                   .uiArguments = options.uiArguments,
                                                   .developerTools = options.developerTools,
                                                   .isInFlatpak = isInFlatpak()},
                                  mainQueue);
  EngineApplication& page = engine->application();
  return {.engine = std::move(engine), .page = &page};
}

}  // namespace brevanholt::platform
