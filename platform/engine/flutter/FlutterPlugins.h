#pragma once

#include "platform/engine/flutter/FlutterFunctions.h"

#include <filesystem>
#include <string>
#include <vector>

namespace brevanholt::platform {

// The plugins of a Flutter bundle, in the order of their libraries' names.
//
// A plugin's library exports a function whose name ends in "_plugin_register_with_registrar". What
// comes before is not always the library's name, so the names are looked for in the library. A
// library that cannot be loaded is logged and left out; calls to its plugins are then answered with
// "not implemented".
class FlutterPlugins {
 public:
  // Loads all libraries beside `engine`, which must be loaded: Dart code opens some by name. The
  // compiled Dart code is left to the engine.
  explicit FlutterPlugins(const std::filesystem::path& libraries);

  // Makes each plugin known to the view, which must be in a window.
  void registerIn(FlView* view, const FlutterFunctions& functions) const;

 private:
  using Register = void(FlPluginRegistrar* registrar);
  struct Plugin {
    std::string name;
    Register* registerPlugin;
  };

  void load(const std::filesystem::path& library);

  std::vector<Plugin> plugins_;
};

}  // namespace brevanholt::platform
