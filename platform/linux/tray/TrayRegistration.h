#pragma once

#include "platform/linux/bus/Bus.h"

#include <functional>
#include <optional>
#include <string>

namespace brevanholt::platform {

// Registers an item with the tray's watcher (org.kde.StatusNotifierWatcher) whenever there is one,
// and tells whether the item is to be seen: a watcher has taken it, and a host draws what the
// watcher knows.
//
// The item is named by its object's path, and so by its connection. A watcher that looks for items
// itself, as one does that is started late, then finds the same item and not a second one.
class TrayRegistration {
 public:
  // `shown` is called with what is known first, and with each change.
  TrayRegistration(Bus& bus, std::string itemPath, std::function<void(bool isShown)> shown);
  TrayRegistration(const TrayRegistration&) = delete;
  TrayRegistration& operator=(const TrayRegistration&) = delete;

 private:
  void watcherChanged(const std::string& owner);
  void registerItem();
  void readHost();
  void tell();

  Bus& bus_;
  std::string itemPath_;
  std::function<void(bool)> shown_;
  bool hasWatcher_ = false;
  std::optional<bool> isRegistered_;  // unset until the watcher has answered
  std::optional<bool> hasHost_;
  std::optional<bool> told_;
  BusSubscription watcher_;
  BusSubscription hostCame_;
  BusSubscription hostWent_;
  Lifetime lifetime_;
};

}  // namespace brevanholt::platform
