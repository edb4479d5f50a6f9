#pragma once

#include "Runner/AppDelegate/AppDelegate.h"
#include "Runner/MainFlutterWindow/MainFlutterWindow.h"
#include "tests/fakes/FakePlatform.h"
#include "tests/support/CapturedLog.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace brevanholt {

// A test of the delegate and the window on the fake platform, with a bridge of their own.
class HostTest : public testing::Test {
 protected:
  using Answer = std::shared_ptr<std::optional<platform::Reply>>;

  HostTest() { start(); }

  // Ends the run and begins another one on the same disk and the same defaults.
  void restart() {
    window_.reset();
    delegate_.reset();
    platform_.engine.messenger.events.clear();
    start();
  }
  platform::Reply call(const std::string& method, platform::Value arguments = {}) {
    return platform_.call(method, std::move(arguments));
  }
  // A call that is answered later.
  Answer begin(const std::string& method, platform::Value arguments = {}) {
    return platform_.engine.messenger.call("brevanholt/platform", method, std::move(arguments));
  }
  platform::Reply finish(const Answer& answer) {
    if (!platform_.mainQueue.runUntil([&] { return answer->has_value(); })) {
      throw std::runtime_error("not answered");
    }
    return **answer;
  }
  [[nodiscard]] const std::vector<platform::MethodCall>& events() const {
    return platform_.engine.messenger.events;
  }
  // The text that a call gave, or the message with which it failed.
  static std::string wordsOf(const platform::Reply& reply) {
    if (const auto* error = std::get_if<platform::MethodError>(&reply)) return error->message;
    const auto* text = std::get<platform::Value>(reply).getIf<std::string>();
    return text != nullptr ? *text : "no text";
  }

  platform::CapturedLog log_;
  platform::FakePlatform platform_;
  std::unique_ptr<BrevanholtSharedItemsBridge> bridge_;
  std::unique_ptr<AppDelegate> delegate_;
  std::shared_ptr<MainFlutterWindow> window_;

 private:
  void start() {
    bridge_ = std::make_unique<BrevanholtSharedItemsBridge>();
    delegate_ = std::make_unique<AppDelegate>(platform_.services(), *bridge_);
    window_ = std::make_shared<MainFlutterWindow>(platform_.services(), delegate_.get(), *bridge_);
    delegate_->setMainWindow(window_);
    window_->awakeFromNib();
  }
};

}  // namespace brevanholt
