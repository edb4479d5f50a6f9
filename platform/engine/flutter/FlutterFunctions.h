#pragma once

#include <gio/gio.h>

// Opaque types of Flutter's public C interface for GTK. An FlView is a
// GtkWidget and a plugin registry, and all of them are GObjects.
struct _FlDartProject;
struct _FlView;
struct _FlEngine;
struct _FlBinaryMessenger;
struct _FlBinaryMessengerResponseHandle;
struct _FlPluginRegistry;
struct _FlPluginRegistrar;

namespace brevanholt::platform {

using FlDartProject = struct ::_FlDartProject;
using FlView = struct ::_FlView;
using FlEngine = struct ::_FlEngine;
using FlBinaryMessenger = struct ::_FlBinaryMessenger;
using FlBinaryMessengerResponseHandle = struct ::_FlBinaryMessengerResponseHandle;
using FlPluginRegistry = struct ::_FlPluginRegistry;
using FlPluginRegistrar = struct ::_FlPluginRegistrar;

using FlMessageHandler = void (*)(FlBinaryMessenger* messenger, const char* channel,
                                  GBytes* message, FlBinaryMessengerResponseHandle* handle,
                                  gpointer data);

// The functions of Flutter's engine library that the host calls, by the names and with the
// signatures of the engine's public documentation (api.flutter.dev/linux-embedder).
struct FlutterFunctions {
  FlDartProject* (*fl_dart_project_new)();
  void (*fl_dart_project_set_assets_path)(FlDartProject* project, char* path);
  void (*fl_dart_project_set_icu_data_path)(FlDartProject* project, char* path);
  void (*fl_dart_project_set_aot_library_path)(FlDartProject* project, const char* path);
  void (*fl_dart_project_set_dart_entrypoint_arguments)(FlDartProject* project, char** arguments);

  FlView* (*fl_view_new)(FlDartProject* project);
  FlEngine* (*fl_view_get_engine)(FlView* view);                           // borrowed
  FlBinaryMessenger* (*fl_engine_get_binary_messenger)(FlEngine* engine);  // borrowed

  // A null handler removes the one that is set.
  void (*fl_binary_messenger_set_message_handler_on_channel)(FlBinaryMessenger* messenger,
                                                             const char* channel,
                                                             FlMessageHandler handler,
                                                             gpointer data, GDestroyNotify destroy);
  gboolean (*fl_binary_messenger_send_response)(FlBinaryMessenger* messenger,
                                                FlBinaryMessengerResponseHandle* handle,
                                                GBytes* response, GError** error);
  // With a callback the UI's reply is asked for.
  void (*fl_binary_messenger_send_on_channel)(FlBinaryMessenger* messenger, const char* channel,
                                              GBytes* message, GCancellable* cancellable,
                                              GAsyncReadyCallback callback, gpointer data);
  GBytes* (*fl_binary_messenger_send_on_channel_finish)(FlBinaryMessenger* messenger,
                                                        GAsyncResult* result, GError** error);

  // The caller owns the registrar.
  FlPluginRegistrar* (*fl_plugin_registry_get_registrar_for_plugin)(FlPluginRegistry* registry,
                                                                    const char* name);
};

}  // namespace brevanholt::platform
