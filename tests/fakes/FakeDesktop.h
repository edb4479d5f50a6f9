#pragma once

#include "platform/desktop/Application.h"
#include "platform/desktop/Image.h"
#include "platform/desktop/Pasteboard.h"
#include "platform/desktop/Screen.h"
#include "platform/desktop/StatusItem.h"
#include "platform/desktop/Window.h"
#include "platform/desktop/Workspace.h"
#include "platform/engine/UiEngine.h"
#include "platform/services/HostName.h"
#include "tests/fakes/FakeBinaryMessenger.h"

#include <optional>
#include <set>
#include <string>
#include <vector>

namespace brevanholt::platform {

struct FakeApplication final : Application {
  void setActivationPolicy(ActivationPolicy newPolicy) override { policy = newPolicy; }
  void activate() override { ++activations; }
  void deactivate() override { ++deactivations; }
  void terminate() override { isTerminated = true; }

  ActivationPolicy policy = ActivationPolicy::kRegular;
  int activations = 0;
  int deactivations = 0;
  bool isTerminated = false;
};

struct FakeWindow final : Window {
  void setDelegate(WindowDelegate* newDelegate) override { delegate = newDelegate; }
  [[nodiscard]] Frame frame() const override { return current; }
  void setFrame(Frame frame) override { current = frame; }
  void setContentView(NativeView& view) override { content = &view; }
  [[nodiscard]] bool isVisible() const override { return visible; }
  void makeKeyAndOrderFront() override {
    visible = true;
    ++presentations;
  }
  void orderOut() override { visible = false; }
  void close() override { isClosed = true; }

  WindowDelegate* delegate = nullptr;
  Frame current{.width = 800, .height = 600};
  NativeView* content = nullptr;
  bool visible = false;
  bool isClosed = false;
  int presentations = 0;
};

struct FakeEngine final : UiEngine {
  [[nodiscard]] NativeView& view() override { return nativeView; }
  [[nodiscard]] BinaryMessenger& binaryMessenger() override { return messenger; }
  void setRunsWhileHidden(bool runs) override { runsWhileHidden = runs; }

  NativeView nativeView;
  FakeBinaryMessenger messenger;
  bool runsWhileHidden = false;
};

struct FakePasteboard final : Pasteboard {
  bool setText(const std::string& newText) override {
    if (!refuses) text = newText;
    return !refuses;
  }

  std::string text;
  bool refuses = false;
};

struct FakeWorkspace final : Workspace {
  void openUrl(const std::string& url, Callback callback) override {
    opened.push_back(url);
    if (refuses) return callback(PlatformError("no program for it"));
    callback(Done{});
  }
  void openFile(const std::filesystem::path& path, Callback callback) override {
    openUrl(path.string(), std::move(callback));
  }
  void reveal(const std::filesystem::path& path) override { revealed.push_back(path); }

  std::vector<std::string> opened;
  std::vector<std::string> revealed;
  bool refuses = false;
};

struct FakeStatusItem final : StatusItem {
  void setImage(const Image& newImage) override { image = newImage; }
  void setToolTip(const std::string& text) override { toolTip = text; }
  void setAccessibilityLabel(const std::string& text) override { accessibilityLabel = text; }
  void setMenu(const Menu& newMenu) override { menu = &newMenu; }

  Image image;
  std::string toolTip;
  std::string accessibilityLabel;
  const Menu* menu = nullptr;
};

struct FakeImages final : Images {
  [[nodiscard]] bool isPicture(const std::filesystem::path& path) const override {
    return pictures.contains(path);
  }
  [[nodiscard]] bool hasApplicationIcon() const override { return applicationIcon; }

  std::set<std::filesystem::path> pictures;
  bool applicationIcon = true;
};

struct FakeScreen final : Screen {
  [[nodiscard]] std::optional<double> mainScaleFactor() const override { return scale; }

  std::optional<double> scale = 1.0;
};

struct FakeHostName final : HostName {
  void localizedName(UniqueFunction<void(std::string)> callback) override { callback(name); }

  std::string name = "Ada’s computer";
};

}  // namespace brevanholt::platform
