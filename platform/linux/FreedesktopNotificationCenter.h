#pragma once

#include "platform/linux/Bus.h"
#include "platform/linux/NotificationMessage.h"
#include "platform/linux/NotificationSwitches.h"
#include "platform/linux/PostedNotifications.h"
#include "platform/services/NotificationCenter.h"

#include <deque>
#include <map>
#include <optional>
#include <set>

namespace brevanholt::platform {

// Notifications over org.freedesktop.Notifications. The service is looked for each time, so it may
// start late, end and start again.
//
// What is asked for one identifier is done in order, since only the answer to one notification says
// what the next has to replace. When one fails, what waits behind it fails with it.
class FreedesktopNotificationCenter final : public NotificationCenter {
 public:
  // `activationTokenGiven` is told the token with which the window may take the focus, before the
  // notification is opened.
  FreedesktopNotificationCenter(Bus& sessionBus, UserDefaults& store, NotificationSender sender,
                                std::function<void(const std::string& token)> activationTokenGiven);

  void setOpenHandler(std::function<void()> handler) override { opened_ = std::move(handler); }
  void requestAuthorization(UniqueFunction<void(Result<bool>)> callback) override;
  void add(const Notification& notification, UniqueFunction<void(Result<Done>)> callback) override;
  void remove(const std::string& identifier) override;

 private:
  // Without a notification it is a removal.
  struct Request {
    std::optional<Notification> notification;
    UniqueFunction<void(Result<Done>)> callback;
  };

  void enqueue(const std::string& identifier, Request request);
  void runFirst(const std::string& identifier);
  void show(const std::string& identifier);
  void send(const std::string& identifier, const std::string& server,
            const std::set<std::string>& capabilities);
  void withdraw(const std::string& identifier);
  void finished(const std::string& identifier, const Result<Done>& outcome);
  // The connection of the running service.
  void findServer(UniqueFunction<void(Result<std::string>)> callback);
  void subscribe();

  Bus& sessionBus_;
  PostedNotifications posted_;
  NotificationSender sender_;
  std::function<void(const std::string&)> activationTokenGiven_;
  NotificationSwitches switches_;
  std::string busId_;
  std::function<void()> opened_ = [] {};
  std::map<std::string, std::deque<Request>> requests_;
  bool hasWarned_ = false;
  std::vector<BusSubscription> subscriptions_;
  Lifetime lifetime_;
};

}  // namespace brevanholt::platform
