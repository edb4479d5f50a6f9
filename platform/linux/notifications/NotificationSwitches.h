#pragma once

#include "platform/linux/bus/Bus.h"

#include <string>

namespace brevanholt::platform {

// The desktop's own settings that keep notifications from appearing, all of them or this
// application's. A desktop without such a setting counts as enabled.
class NotificationSwitches {
 public:
  using Callback = UniqueFunction<void(bool)>;

  NotificationSwitches(Bus& sessionBus, std::string applicationName, std::string applicationId);

  // `server` is the name that the notification server gives itself.
  void areOff(const std::string& server, Callback callback);

 private:
  using PropertyCallback = UniqueFunction<void(GVariant* valueOrNull)>;

  void getProperty(const BusMethod& method, const char* owner, const char* name,
                   PropertyCallback callback);
  void askXfce(Callback callback);

  Bus& sessionBus_;
  std::string applicationName_;
  std::string applicationId_;
  Lifetime lifetime_;
};

}  // namespace brevanholt::platform
