#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace brevanholt::platform {

// Regular: in the taskbar, with a window. Accessory: only the status item.
enum class ActivationPolicy { kRegular, kAccessory };

// What another program hands over to be shared.
struct ServicePasteboard {
  std::vector<std::filesystem::path> files;  // and folders; absolute
  std::string text;
};

class ApplicationDelegate {
 public:
  virtual ~ApplicationDelegate() = default;
  virtual void applicationDidFinishLaunching() = 0;
  virtual void applicationDidBecomeActive() = 0;
  // Launched again while running. True where the request was handled.
  virtual bool applicationShouldHandleReopen(bool hasVisibleWindows) = 0;
  // Asked to open URLs: links of the program's own scheme, files.
  virtual void applicationOpen(const std::vector<std::string>& urls) = 0;
  // The user chose to share something from another program with this one.
  virtual void shareWithBrevanholt(const ServicePasteboard& pasteboard) = 0;
  // The user asked outside the window to choose files to share.
  virtual void chooseFilesToShare() = 0;
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
