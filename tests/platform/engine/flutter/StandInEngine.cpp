#include "tests/platform/engine/flutter/StandInEngine.h"

#include "platform/gtk/GLibPointers.h"

#include <gtk/gtk.h>

#include <algorithm>
#include <cstdlib>
#include <string_view>
#include <thread>
#include <utility>

namespace brevanholt::platform {
namespace {

std::string textOf(GBytes* bytes) {
  if (bytes == nullptr) return {};
  gsize size = 0;
  const auto* data = static_cast<const char*>(g_bytes_get_data(bytes, &size));
  return {data, size};
}

void answer(GTask* task) {
  if (task == nullptr) return;
  g_task_return_pointer(task, nullptr, nullptr);
  g_object_unref(task);
}

// An opaque object of the engine.
template <class T>
T* object() {
  return static_cast<T*>(static_cast<void*>(g_object_new(G_TYPE_OBJECT, nullptr)));
}

bool isAskedTo(std::string_view behaviour) {
  const char* asked = std::getenv("STAND_IN_ENGINE");
  return asked != nullptr && asked == behaviour;
}

}  // namespace

StandInDart& StandInDart::instance() {
  static StandInDart dart;
  return dart;
}

void StandInDart::listen(const std::string& channel) {
  listening_.push_back(channel);
  if (const auto kept = buffered_.extract(channel)) events_.push_back(kept.mapped());
}

int StandInDart::call(const std::string& channel, const std::string& text) {
  const auto found = handlers.find(channel);
  if (found == handlers.end()) return -1;
  const Handler handler = found->second;
  const GObjectPointer<GObject> handle(object<GObject>());
  g_object_set_data(handle.get(), "call", GINT_TO_POINTER(++calls_));
  const GBytesPointer bytes(g_bytes_new(text.data(), text.size()));
  handler.function(nullptr, channel.c_str(), bytes.get(),
                   reinterpret_cast<FlBinaryMessengerResponseHandle*>(handle.get()), handler.data);
  return calls_;
}

std::optional<std::string> StandInDart::next() {
  if (events_.empty()) return std::nullopt;
  return events_.front().text;
}

void StandInDart::handle() {
  answer(events_.front().answer);
  events_.erase(events_.begin());
}

void StandInDart::end() {
  for (const Event& event : events_) answer(event.answer);
  for (const auto& [channel, event] : buffered_) answer(event.answer);
  events_.clear();
  buffered_.clear();
  listening_.clear();
}

void StandInDart::arrived(Event event) {
  if (std::ranges::count(listening_, event.channel) != 0) return events_.push_back(event);
  const auto [kept, isNew] = buffered_.try_emplace(event.channel, event);
  if (!isNew) answer(std::exchange(kept->second, event).answer);
}

}  // namespace brevanholt::platform

using namespace brevanholt::platform;

extern "C" {

FlDartProject* fl_dart_project_new() {
  return object<FlDartProject>();
}
void fl_dart_project_set_assets_path(FlDartProject*, char*) {}
void fl_dart_project_set_icu_data_path(FlDartProject*, char*) {}
void fl_dart_project_set_aot_library_path(FlDartProject*, const char*) {}
void fl_dart_project_set_dart_entrypoint_arguments(FlDartProject*, char**) {}

FlView* fl_view_new(FlDartProject*) {
  GtkWidget* view = gtk_drawing_area_new();
  g_signal_connect(view, "realize", G_CALLBACK(+[](GtkWidget*, gpointer) {
                     if (isAskedTo("exit")) std::thread([] { std::exit(3); }).detach();
                   }),
                   nullptr);
  return reinterpret_cast<FlView*>(view);
}
FlEngine* fl_view_get_engine(FlView*) {
  static auto* engine = object<FlEngine>();
  return isAskedTo("fail") ? nullptr : engine;
}
FlBinaryMessenger* fl_engine_get_binary_messenger(FlEngine*) {
  static auto* messenger = object<FlBinaryMessenger>();
  return messenger;
}

void fl_binary_messenger_set_message_handler_on_channel(FlBinaryMessenger*, const char* channel,
                                                        FlMessageHandler handler, gpointer data,
                                                        GDestroyNotify) {
  if (handler != nullptr) {
    StandInDart::instance().handlers[channel] = {handler, data};
  } else {
    StandInDart::instance().handlers.erase(channel);
  }
}
gboolean fl_binary_messenger_send_response(FlBinaryMessenger*,
                                           FlBinaryMessengerResponseHandle* handle,
                                           GBytes* response, GError**) {
  auto* object = static_cast<GObject*>(static_cast<void*>(handle));
  const int call = GPOINTER_TO_INT(g_object_get_data(object, "call"));
  StandInDart::instance().replies[call].push_back(textOf(response));
  return TRUE;
}
void fl_binary_messenger_send_on_channel(FlBinaryMessenger* messenger, const char* channel,
                                         GBytes* message, GCancellable*,
                                         GAsyncReadyCallback callback, gpointer data) {
  GTask* task = callback != nullptr ? g_task_new(messenger, nullptr, callback, data) : nullptr;
  StandInDart::instance().arrived({.channel = channel, .text = textOf(message), .answer = task});
}
#ifndef STAND_IN_LACKS_A_FUNCTION
GBytes* fl_binary_messenger_send_on_channel_finish(FlBinaryMessenger*, GAsyncResult* result,
                                                   GError** error) {
  return static_cast<GBytes*>(g_task_propagate_pointer(G_TASK(result), error));
}
#endif
FlPluginRegistrar* fl_plugin_registry_get_registrar_for_plugin(FlPluginRegistry*, const char*) {
  return object<FlPluginRegistrar>();
}

}  // extern "C"

#ifndef STAND_IN_LACKS_A_FUNCTION
FlutterFunctions brevanholt::platform::standInFunctions() {
  return {fl_dart_project_new,
          fl_dart_project_set_assets_path,
          fl_dart_project_set_icu_data_path,
          fl_dart_project_set_aot_library_path,
          fl_dart_project_set_dart_entrypoint_arguments,
          fl_view_new,
          fl_view_get_engine,
          fl_engine_get_binary_messenger,
          fl_binary_messenger_set_message_handler_on_channel,
          fl_binary_messenger_send_response,
          fl_binary_messenger_send_on_channel,
          fl_binary_messenger_send_on_channel_finish,
          fl_plugin_registry_get_registrar_for_plugin};
}
#endif
