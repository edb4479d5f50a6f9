#pragma once

#include "platform/linux/bus/Bus.h"
#include "platform/services/WakeNotices.h"

#include <set>
#include <string>
#include <vector>

namespace brevanholt::platform {

// Sleep and wake as logind announces them. Screens as the desktop's screen saver announces them,
// under org.freedesktop.ScreenSaver or a name of the desktop's own; in a session where none of
// these services runs, the end of logind's session lock stands for it.
class DBusWakeNotices final : public WakeNotices {
 public:
  DBusWakeNotices(Bus& systemBus, Bus& sessionBus);

 private:
  void watchScreenSaver(Bus& sessionBus, const char* service, const char* path);
  void watchSessionLock(Bus& systemBus);
  void sessionChanged(GVariant* parameters);

  BusSubscription logind_;
  BusSubscription sleep_;
  std::vector<BusSubscription> screenSavers_;
  std::set<std::string> runningScreenSavers_;
  BusSubscription sessionLock_;
  Lifetime lifetime_;
};

}  // namespace brevanholt::platform
