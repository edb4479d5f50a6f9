#pragma once

#include "platform/Services.h"
#include "tests/fakes/FakeBinaryMessenger.h"

#include <deque>
#include <utility>

namespace brevanholt::platform {

struct FakeApplication final : Application {
  void setActivationPolicy(ActivationPolicy newPolicy) override { policy = newPolicy; }
  void activate() override {}
  void deactivate() override {}
  void terminate() override { isTerminated = true; }

  ActivationPolicy policy = ActivationPolicy::kRegular;
  bool isTerminated = false;
};

struct FakeWindow final : Window {
  void setDelegate(WindowDelegate* newDelegate) override { delegate = newDelegate; }
  [[nodiscard]] Frame frame() const override { return {}; }
  void setFrame(Frame /*frame*/) override {}
  void setContentView(NativeView& /*view*/) override {}
  [[nodiscard]] bool isVisible() const override { return visible; }
  void makeKeyAndOrderFront() override {
    visible = true;
    ++presentations;
  }
  void orderOut() override { visible = false; }
  void close() override { visible = false; }

  WindowDelegate* delegate = nullptr;
  bool visible = false;
  int presentations = 0;
};

struct FakeEngine final : UiEngine {
  [[nodiscard]] NativeView& view() override { return nativeView; }
  [[nodiscard]] BinaryMessenger& binaryMessenger() override { return messenger; }
  void setFileAccess(FileAccess* newAccess) override { access = newAccess; }

  NativeView nativeView;
  FakeBinaryMessenger messenger;
  FileAccess* access = nullptr;
};

// A view over which the test drags.
struct FakeDropContainer final : DropContainer {
  [[nodiscard]] NativeView& view() override { return nativeView; }
  void addSubview(NativeView& /*view*/) override {}
  void registerForDraggedFiles(DragDestination* newDestination) override {
    destination = newDestination;
  }

  NativeView nativeView;
  DragDestination* destination = nullptr;
};

// Panels that stay open until the test answers them, oldest first.
struct FakeOpenPanel final : OpenPanel {
  void choose(Choice /*choice*/, Callback callback) override {
    open.push_back(std::move(callback));
  }
  void answer(Locations chosen) {
    Callback callback = std::move(open.front());
    open.pop_front();
    callback(std::move(chosen));
  }

  std::deque<Callback> open;
};

struct FakeStatusItem final : StatusItem {
  void setImage(const Image& /*image*/) override {}
  void setToolTip(const std::string& text) override { toolTip = text; }
  void setAccessibilityLabel(const std::string& /*text*/) override {}
  void setMenu(const Menu& newMenu) override { menu = &newMenu; }

  std::string toolTip;
  const Menu* menu = nullptr;
};

// The other services of a desktop. With `refuses`, opening and copying fail.
struct FakeDesktop final : Pasteboard, Workspace, Images, Screen, HostName {
  bool setText(const std::string& /*text*/) override { return !refuses; }
  void openUrl(const std::string& url, Callback callback) override {
    opened.push_back(url);
    if (refuses) return callback(PlatformError("no program for it"));
    callback(Done{});
  }
  void openFile(const std::filesystem::path& path, Callback callback) override {
    openUrl(path.string(), std::move(callback));
  }
  void reveal(const std::filesystem::path& /*path*/) override {}
  [[nodiscard]] bool isPicture(const std::filesystem::path& /*file*/) const override {
    return false;
  }
  [[nodiscard]] bool hasApplicationIcon() const override { return true; }
  [[nodiscard]] std::optional<double> mainScaleFactor() const override { return 1.0; }
  [[nodiscard]] std::string localizedName() const override { return "Ada’s"; }

  std::vector<std::string> opened;
  bool refuses = false;
};

}  // namespace brevanholt::platform
