#include "platform/engine/flutter/FlutterLibrary.h"

#include "platform/foundation/PlatformError.h"

#include <dlfcn.h>

namespace brevanholt::platform {

RuntimeLibrary::RuntimeLibrary(const std::filesystem::path& file)
    : handle_(::dlopen(file.c_str(), RTLD_NOW | RTLD_LOCAL)) {
  if (handle_ == nullptr) {
    throw PlatformError("a library of the bundle cannot be loaded: " + std::string(::dlerror()));
  }
}

void* RuntimeLibrary::symbol(const char* name) const {
  return ::dlsym(handle_, name);
}

FlutterFunctions loadFlutterEngine(const std::filesystem::path& file) {
  const RuntimeLibrary library(file);
  const auto find = [&]<class Function>(const char* name, Function*& function) {
    function = library.find<Function>(name);
    if (function == nullptr) {
      throw PlatformError("“" + file.string() + "” lacks the function " + name);
    }
  };
  FlutterFunctions functions{};
#define BREVANHOLT_FIND(name) find(#name, functions.name)
  BREVANHOLT_FIND(fl_dart_project_new);
  BREVANHOLT_FIND(fl_dart_project_set_assets_path);
  BREVANHOLT_FIND(fl_dart_project_set_icu_data_path);
  BREVANHOLT_FIND(fl_dart_project_set_aot_library_path);
  BREVANHOLT_FIND(fl_dart_project_set_dart_entrypoint_arguments);
  BREVANHOLT_FIND(fl_view_new);
  BREVANHOLT_FIND(fl_view_get_engine);
  BREVANHOLT_FIND(fl_engine_get_binary_messenger);
  BREVANHOLT_FIND(fl_binary_messenger_set_message_handler_on_channel);
  BREVANHOLT_FIND(fl_binary_messenger_send_response);
  BREVANHOLT_FIND(fl_binary_messenger_send_on_channel);
  BREVANHOLT_FIND(fl_binary_messenger_send_on_channel_finish);
  BREVANHOLT_FIND(fl_plugin_registry_get_registrar_for_plugin);
#undef BREVANHOLT_FIND
  return functions;
}

}  // namespace brevanholt::platform
