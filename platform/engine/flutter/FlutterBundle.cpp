#include "platform/engine/flutter/FlutterBundle.h"

#include "platform/foundation/PlatformError.h"

namespace brevanholt::platform {

namespace fs = std::filesystem;

FlutterBundle::FlutterBundle(const fs::path& folder)
    : libraries(folder / "lib"),
      engine(libraries / "libflutter_linux_gtk.so"),
      code(libraries / "libapp.so"),
      assets(folder / "data/flutter_assets"),
      debugCode(assets / "kernel_blob.bin"),
      characters(folder / "data/icudtl.dat") {}

bool FlutterBundle::isThere() const {
  std::error_code error;
  return fs::is_regular_file(engine, error) && fs::is_directory(assets, error);
}

void FlutterBundle::expectWhole() const {
  std::error_code error;
  if (!fs::is_regular_file(characters, error)) {
    throw PlatformError("the Flutter bundle has no “" + characters.string() + "”");
  }
  if (!fs::is_regular_file(code, error) && !fs::is_regular_file(debugCode, error)) {
    throw PlatformError("the Flutter bundle has neither “" + code.string() + "” (release) nor “" +
                        debugCode.string() + "” (debug)");
  }
}

}  // namespace brevanholt::platform
