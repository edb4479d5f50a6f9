#include "platform/engine/flutter/FlutterPlugins.h"

#include "platform/engine/flutter/FlutterLibrary.h"
#include "platform/foundation/Log.h"
#include "platform/gtk/GLibPointers.h"

#include <algorithm>
#include <set>
#include <string_view>

namespace brevanholt::platform {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kRegisters = "_plugin_register_with_registrar";

// The zero-terminated words of a file that end so. A library's names of functions are among them.
std::set<std::string> wordsEndingInRegisters(const fs::path& file) {
  using Mapping = std::unique_ptr<GMappedFile, FreeWith<g_mapped_file_unref>>;
  const Mapping mapping(g_mapped_file_new(file.c_str(), FALSE, nullptr));
  std::set<std::string> words;
  if (!mapping || g_mapped_file_get_length(mapping.get()) == 0) return words;
  const std::string_view content(g_mapped_file_get_contents(mapping.get()),
                                 g_mapped_file_get_length(mapping.get()));
  for (std::size_t at = content.find(kRegisters); at != std::string_view::npos;
       at = content.find(kRegisters, at + 1)) {
    const std::size_t end = at + kRegisters.size();
    if (end >= content.size() || content[end] != '\0') continue;
    const std::size_t before = content.rfind('\0', at);
    if (before == std::string_view::npos) continue;
    words.emplace(content.substr(before + 1, end - before - 1));
  }
  return words;
}

}  // namespace

FlutterPlugins::FlutterPlugins(const fs::path& libraries) {
  std::set<fs::path> files;
  std::error_code error;
  for (const fs::directory_entry& entry : fs::directory_iterator(libraries, error)) {
    const fs::path name = entry.path().filename();
    if (name.extension() == ".so" && name != "libapp.so" && name != "libflutter_linux_gtk.so") {
      files.insert(entry.path());
    }
  }
  for (const fs::path& file : files) load(file);
}

void FlutterPlugins::load(const fs::path& file) {
  try {
    const RuntimeLibrary library(file);
    for (const std::string& name : wordsEndingInRegisters(file)) {
      auto* function = library.find<Register>(name.c_str());
      if (function != nullptr) plugins_.push_back({.name = name, .registerPlugin = function});
    }
  } catch (const std::exception& failure) {
    logWarning(failure.what());
  }
}

void FlutterPlugins::registerIn(FlView* view, const FlutterFunctions& functions) const {
  for (const Plugin& plugin : plugins_) {
    const std::string name = plugin.name.substr(0, plugin.name.size() - kRegisters.size());
    const GObjectPointer<FlPluginRegistrar> registrar(
        functions.fl_plugin_registry_get_registrar_for_plugin(
            reinterpret_cast<FlPluginRegistry*>(view), name.c_str()));
    if (registrar) plugin.registerPlugin(registrar.get());
  }
}

}  // namespace brevanholt::platform
