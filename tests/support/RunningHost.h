#pragma once

#include "Runner/AppDelegate/AppDelegate.h"
#include "Runner/MainFlutterWindow/MainFlutterWindow.h"
#include "tests/fakes/FakePlatform.h"

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

namespace brevanholt {

// How the UI is told of an item in a folder, and of the folder itself.
inline platform::Map inFolder(const std::filesystem::path& path, const std::string& relativePath,
                              std::int64_t size, const char* kind) {
  return {{"path", path.native()},
          {"name", path.filename().native()},
          {"size", size},
          {"relativePath", relativePath},
          {"kind", kind}};
}

// The delegate and the window on the fake platform, with a bridge of their own.
class RunningHost {
 public:
  using Answer = std::shared_ptr<std::optional<platform::Reply>>;

  RunningHost() { start(); }

  // Ends the run and begins another one on the same disk and the same defaults.
  void restart() {
    window.reset();
    delegate.reset();
    platform.engine.messenger.events.clear();
    start();
  }
  platform::Reply call(const std::string& method, platform::Value arguments = {}) {
    return platform.call(method, std::move(arguments));
  }
  // A call that is answered later.
  Answer begin(const std::string& method) {
    return platform.engine.messenger.call("brevanholt/platform", method);
  }
  platform::Reply finish(const Answer& answer) {
    if (!platform.mainQueue.runUntil([&] { return answer->has_value(); })) {
      throw std::runtime_error("not answered");
    }
    return **answer;
  }
  // Waits until the UI was sent `count` events in all.
  bool waitForEvents(std::size_t count) {
    return platform.mainQueue.runUntil([&] { return events().size() >= count; });
  }
  [[nodiscard]] const std::vector<platform::MethodCall>& events() const {
    return platform.engine.messenger.events;
  }
  [[nodiscard]] std::vector<std::string> eventNames() const {
    std::vector<std::string> names;
    for (const auto& event : events()) names.push_back(event.method);
    return names;
  }
  // Waits until everything that was given to the utility queue is done.
  void finishUtilityWork() {
    platform.utilityQueue.sync([] {});
    platform.mainQueue.drain();
  }

  platform::FakePlatform platform;
  std::unique_ptr<BrevanholtSharedItemsBridge> bridge;
  std::unique_ptr<AppDelegate> delegate;
  std::shared_ptr<MainFlutterWindow> window;

 private:
  void start() {
    bridge = std::make_unique<BrevanholtSharedItemsBridge>();
    delegate = std::make_unique<AppDelegate>(platform.services(), *bridge);
    window = std::make_shared<MainFlutterWindow>(platform.services(), delegate.get(), *bridge);
    delegate->setMainWindow(window);
    window->awakeFromNib();
  }
};

}  // namespace brevanholt
