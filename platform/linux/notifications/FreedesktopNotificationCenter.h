#pragma once

#include "platform/gtk/LoopSource.h"
#include "platform/linux/bus/Bus.h"
#include "platform/linux/notifications/NotificationMessage.h"
#include "platform/linux/notifications/NotificationSwitches.h"
#include "platform/linux/notifications/PostedNotifications.h"
#include "platform/services/NotificationCenter.h"

#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <set>

namespace brevanholt::platform {

struct NotificationLimits {
  std::chrono::milliseconds answer = kBusTimeLimit;                 // until a request has failed
  std::chrono::milliseconds lateAnswer = std::chrono::minutes(10);  // until its answer is given up
};

// Notifications over org.freedesktop.Notifications. The service is looked for each time, so it may
// start late, end and start again.
//
// What is asked for one identifier is done in order, since only the answer to one notification says
// what the next has to replace. One that fails does not keep the next from being tried.
//
// A server that answers after the time limit has shown a notification that was reported as failed.
// Its number is kept, so that the next one of that identifier replaces it and a removal removes it;
// where that was asked for in the meantime, the late one is removed at once.
class FreedesktopNotificationCenter final : public NotificationCenter {
 public:
  // `activationTokenGiven` is told the token with which the window may take the focus, before the
  // notification is opened.
  FreedesktopNotificationCenter(Bus& sessionBus, UserDefaults& store, NotificationSender sender,
                                std::function<void(const std::string& token)> activationTokenGiven,
                                NotificationLimits limits = {});

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

  // A notification on its way to a server, until that answers.
  struct Posting {
    std::string server;
    bool isLate = false;        // the time limit is over
    bool isSuperseded = false;  // another one was shown since, or a removal was asked for
    LoopSource onTimeLimit;
  };

  void enqueue(const std::string& identifier, Request request);
  void runFirst(const std::string& identifier);
  void show(const std::string& identifier);
  void send(const std::string& identifier, const std::string& server,
            const std::set<std::string>& capabilities);
  void posted(const std::string& identifier, const std::shared_ptr<Posting>& posting,
              const Result<GVariantPointer>& reply);
  void supersedeLate(const std::string& identifier);
  void withdraw(const std::string& identifier);
  void close(const std::string& server, std::uint32_t number,
             UniqueFunction<void(const Result<GVariantPointer>&)> callback);
  void finished(const std::string& identifier, const Result<Done>& outcome);
  void logFailure(const PlatformError& error);
  // The connection of the running service.
  void findServer(UniqueFunction<void(Result<std::string>)> callback);
  void subscribe();

  Bus& sessionBus_;
  PostedNotifications posted_;
  NotificationSender sender_;
  NotificationLimits limits_;
  std::function<void(const std::string&)> activationTokenGiven_;
  NotificationSwitches switches_;
  std::string busId_;
  std::function<void()> opened_ = [] {};
  std::map<std::string, std::deque<Request>> requests_;
  std::multimap<std::string, std::shared_ptr<Posting>> postings_;
  std::string lastWarning_;
  std::vector<BusSubscription> subscriptions_;
  Lifetime lifetime_;
};

}  // namespace brevanholt::platform
