#pragma once

#include "platform/engine/UiEngine.h"
#include "platform/engine/web/BundleScheme.h"
#include "platform/engine/web/EngineApplication.h"
#include "platform/engine/web/WebBinaryMessenger.h"
#include "platform/engine/web/files/EngineFiles.h"
#include "platform/engine/web/sockets/EngineSockets.h"
#include "platform/engine/web/transfers/EngineTransfers.h"
#include "platform/foundation/Lifetime.h"
#include "platform/gtk/GLibPointers.h"
#include "platform/gtk/GtkNativeView.h"
#include "platform/gtk/LoopSource.h"

#include <webkit2/webkit2.h>

#include <chrono>
#include <memory>
#include <string>
#include <vector>

namespace brevanholt::platform {

struct WebEngineOptions {
  std::filesystem::path uiBundle;
  bool keepsBundle = false;             // serves its files as they were at the start
  std::filesystem::path webExtensions;  // holds the module that joins a page to the host
  std::vector<std::string> uiArguments;
  bool developerTools = false;
  bool isInFlatpak = false;
};

// The UI in a WebKitGTK view. Only the bundle loads; a web process that dies is started again.
class WebEngine final : public UiEngine {
 public:
  WebEngine(WebEngineOptions options, MainQueue& mainQueue);
  ~WebEngine() override;

  [[nodiscard]] NativeView& view() override { return *nativeView_; }
  [[nodiscard]] BinaryMessenger& binaryMessenger() override { return messenger_; }
  void setFileAccess(FileAccess* access) override {
    files_.setAccess(access);
    transfers_.setAccess(access);
  }
  [[nodiscard]] BundleNeeds bundleNeeds() const override { return needs_; }

  // What the page may ask besides the host's methods; it answers “arguments” and “setZoom” itself.
  [[nodiscard]] EngineApplication& application() { return application_; }

 private:
  void answerPage();
  void setZoom(std::int64_t percent);
  void createContext();
  void createView();
  void configureSettings();
  void leaveDragsToTheHost();
  void load();
  void pageJoined(WebKitUserMessage* message);
  void pageGone();
  void webProcessEnded(WebKitWebProcessTerminationReason reason);

  WebEngineOptions options_;
  BundleNeeds needs_;
  BundleScheme scheme_;
  WebBinaryMessenger messenger_;
  EngineFiles files_;
  EngineSockets sockets_;
  EngineTransfers transfers_;
  EngineApplication application_;
  GObjectPointer<WebKitWebContext> context_;
  GObjectPointer<WebKitWebView> webView_;
  std::unique_ptr<GtkNativeView> nativeView_;
  LoopSource onReload_;
  std::chrono::steady_clock::time_point lastLoad_;
};

}  // namespace brevanholt::platform
