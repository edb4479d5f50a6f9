#pragma once

#include "platform/engine/UiEngine.h"
#include "platform/engine/flutter/FlutterBinaryMessenger.h"
#include "platform/engine/flutter/FlutterBundle.h"
#include "platform/engine/flutter/FlutterPlugins.h"
#include "platform/gtk/GtkNativeView.h"
#include "platform/gtk/LoopSource.h"

#include <gtk/gtk.h>
#include <gtkmm/box.h>

#include <memory>
#include <string>
#include <vector>

namespace brevanholt::platform {

// The UI in a Flutter engine, in this process. Its Dart code starts when the view is in a window,
// also in one that is not shown.
//
// Flutter's own view expects that the window it comes into is realized, so it stands in a box and
// is added when the box is.
//
// Dart's exit() ends this process with its status.
class FlutterEngine final : public UiEngine {
 public:
  // Throws PlatformError where the bundle is incomplete, or its engine is of another interface.
  FlutterEngine(const FlutterBundle& bundle, const std::vector<std::string>& uiArguments);
  ~FlutterEngine() override;
  FlutterEngine(const FlutterEngine&) = delete;
  FlutterEngine& operator=(const FlutterEngine&) = delete;

  [[nodiscard]] NativeView& view() override { return nativeView_; }
  [[nodiscard]] BinaryMessenger& binaryMessenger() override { return *messenger_; }

 private:
  void createView(const FlutterBundle& bundle, const std::vector<std::string>& uiArguments);
  void placed();
  void start();
  [[nodiscard]] FlView* flutterView() const { return reinterpret_cast<FlView*>(widget_.get()); }

  FlutterFunctions functions_;
  FlutterPlugins plugins_;
  GObjectPointer<GtkWidget> widget_;
  FlEngine* engine_ = nullptr;  // the view's
  Gtk::Box box_;
  GtkNativeView nativeView_{box_};
  std::unique_ptr<FlutterBinaryMessenger> messenger_;
  LoopSource onStart_;
  sigc::connection placing_;
};

}  // namespace brevanholt::platform
