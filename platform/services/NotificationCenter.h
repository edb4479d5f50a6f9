#pragma once

#include "platform/foundation/Result.h"
#include "platform/foundation/UniqueFunction.h"

#include <functional>
#include <string>

namespace brevanholt::platform {

struct Notification {
  std::string identifier;  // the application's own name for it
  std::string title;
  std::string body;
};

// What the desktop tells the user on the application's behalf. Every callback runs once, on the
// main thread, within a time limit.
class NotificationCenter {
 public:
  virtual ~NotificationCenter() = default;
  // Runs each time the user opens a notification of this application.
  virtual void setOpenHandler(std::function<void()> handler) = 0;
  // Whether the user lets notifications appear; fails where that cannot be learnt.
  virtual void requestAuthorization(UniqueFunction<void(Result<bool>)> callback) = 0;
  // Shows the notification at once, with the default sound, in place of the one that has the same
  // identifier.
  virtual void add(const Notification& notification,
                   UniqueFunction<void(Result<Done>)> callback) = 0;
  // Takes the notification away, also one of an earlier run; there need not be one.
  virtual void remove(const std::string& identifier) = 0;
};

}  // namespace brevanholt::platform
