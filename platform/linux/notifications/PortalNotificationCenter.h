#pragma once

#include "platform/linux/bus/Bus.h"
#include "platform/services/NotificationCenter.h"

namespace brevanholt::platform {

// Notifications over org.freedesktop.portal.Notification. The portal knows them by the
// application's own identifiers, so replacing one and taking one of an earlier run away need no
// memory here.
class PortalNotificationCenter final : public NotificationCenter {
 public:
  // `activationTokenGiven` is told the token with which the window may take the focus, where the
  // portal has one, before the notification is opened.
  PortalNotificationCenter(Bus& sessionBus,
                           std::function<void(const std::string& token)> activationTokenGiven);

  void setOpenHandler(std::function<void()> handler) override { opened_ = std::move(handler); }
  // Whether there is a portal. What the person set for this application is for the desktop to know.
  void requestAuthorization(UniqueFunction<void(Result<bool>)> callback) override;
  void add(const Notification& notification, UniqueFunction<void(Result<Done>)> callback) override;
  void remove(const std::string& identifier) override;

 private:
  void findVersion(UniqueFunction<void(Result<std::uint32_t>)> callback);
  void actionInvoked(GVariant* parameters);

  Bus& sessionBus_;
  std::function<void(const std::string&)> activationTokenGiven_;
  std::function<void()> opened_ = [] {};
  BusSubscription action_;
  Lifetime lifetime_;
};

}  // namespace brevanholt::platform
