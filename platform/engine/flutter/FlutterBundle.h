#pragma once

#include <filesystem>

namespace brevanholt::platform {

// Where the parts of what "flutter build linux" leaves are.
struct FlutterBundle {
  std::filesystem::path libraries;   // lib: the engine's library and the plugins'
  std::filesystem::path engine;      // lib/libflutter_linux_gtk.so
  std::filesystem::path code;        // lib/libapp.so: compiled Dart; a debug bundle has none
  std::filesystem::path assets;      // data/flutter_assets
  std::filesystem::path debugCode;   // data/flutter_assets/kernel_blob.bin
  std::filesystem::path characters;  // data/icudtl.dat

  explicit FlutterBundle(const std::filesystem::path& folder);

  // Whether the folder holds an engine's library and assets.
  [[nodiscard]] bool isThere() const;
  // Throws PlatformError that names what is missing.
  void expectWhole() const;
};

}  // namespace brevanholt::platform
