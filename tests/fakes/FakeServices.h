#pragma once

#include "platform/services/LoginItem.h"
#include "platform/services/NetworkMonitor.h"
#include "platform/services/NotificationCenter.h"

#include <map>
#include <optional>
#include <string>
#include <utility>

namespace brevanholt::platform {

// Shows what it is given until it is taken away.
struct FakeNotificationCenter final : NotificationCenter {
  void setOpenHandler(std::function<void()> handler) override { opened = std::move(handler); }
  void requestAuthorization(UniqueFunction<void(Result<bool>)> callback) override {
    if (failure) return callback(*failure);
    callback(isAllowed);
  }
  void add(const Notification& notification, UniqueFunction<void(Result<Done>)> callback) override {
    if (failure) return callback(*failure);
    shown[notification.identifier] = {notification.title, notification.body};
    callback(Done{});
  }
  void remove(const std::string& identifier) override { shown.erase(identifier); }

  std::map<std::string, std::pair<std::string, std::string>> shown;
  std::function<void()> opened;
  bool isAllowed = true;
  std::optional<PlatformError> failure;
};

struct FakeLoginItem final : LoginItem {
  [[nodiscard]] Status status() const override { return current; }
  void registerItem() override { change(Status::kEnabled); }
  void unregisterItem() override { change(Status::kNotRegistered); }

  Status current = Status::kNotRegistered;
  int changes = 0;
  std::optional<PlatformError> failure;

 private:
  void change(Status status) {
    if (failure) throw *failure;
    current = status;
    ++changes;
  }
};

// A network that changes when the test calls `updated`.
struct FakeNetworkMonitor final : NetworkMonitor {
  void start(const std::string& queueLabel, std::function<void()> handler) override {
    label = queueLabel;
    updated = std::move(handler);
    updated();
  }
  void cancel() override { updated = nullptr; }

  std::string label;
  std::function<void()> updated;
};

}  // namespace brevanholt::platform
