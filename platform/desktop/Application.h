#pragma once

#include <string>
#include <vector>

namespace brevanholt::platform {

// Regular: in the taskbar, with a window. Accessory: only the status item.
enum class ActivationPolicy { kRegular, kAccessory };

class ApplicationDelegate {
 public:
  virtual ~ApplicationDelegate() = default;
  virtual void applicationDidFinishLaunching() = 0;
  virtual void applicationDidBecomeActive() = 0;
  // Launched again while running. True where the request was handled.
  virtual bool applicationShouldHandleReopen(bool hasVisibleWindows) = 0;
};

// The running program as the desktop sees it.
class Application {
 public:
  virtual ~Application() = default;
  virtual void setActivationPolicy(ActivationPolicy policy) = 0;
  // Asks the desktop to bring the program to the front.
  virtual void activate() = 0;
  virtual void deactivate() = 0;
  // Ends the event loop.
  virtual void terminate() = 0;
};

}  // namespace brevanholt::platform
