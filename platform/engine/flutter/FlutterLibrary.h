#pragma once

#include "platform/engine/flutter/FlutterFunctions.h"

#include <filesystem>
#include <string>

namespace brevanholt::platform {

// A library that is loaded when the program runs. It stays loaded until the process ends: GObject
// types and threads that a library made cannot be unloaded.
class RuntimeLibrary {
 public:
  // Throws PlatformError with the loader's reason.
  explicit RuntimeLibrary(const std::filesystem::path& file);

  // The function of that name, null where there is none.
  template <class Function>
  [[nodiscard]] Function* find(const char* name) const {
    return reinterpret_cast<Function*>(symbol(name));
  }

 private:
  [[nodiscard]] void* symbol(const char* name) const;

  void* handle_;
};

// Loads Flutter's engine and looks up all of its functions. Throws PlatformError that names the
// function that is missing.
[[nodiscard]] FlutterFunctions loadFlutterEngine(const std::filesystem::path& file);

}  // namespace brevanholt::platform
