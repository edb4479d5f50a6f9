#pragma once

#include "platform/linux/Bus.h"
#include "platform/services/WakeNotices.h"

namespace brevanholt::platform {

// Sleep and wake as logind tells of them, the screens as org.freedesktop.ScreenSaver does.
class DBusWakeNotices final : public WakeNotices {
 public:
  DBusWakeNotices(Bus& systemBus, Bus& sessionBus);

 private:
  BusSubscription logind_;
  BusSubscription sleep_;
  BusSubscription screens_;
};

}  // namespace brevanholt::platform
