#pragma once

#include <functional>
#include <string>

namespace brevanholt::platform {

// Tells of changes of the network path: interfaces, addresses and routes that come and go.
class NetworkMonitor {
 public:
  virtual ~NetworkMonitor() = default;
  // Runs `updated` for every change, and once soon after the start, on a thread of its own that is
  // named `queueLabel`. Once at a time.
  virtual void start(const std::string& queueLabel, std::function<void()> updated) = 0;
  // When this returns, `updated` has run for the last time. For the thread that called start().
  virtual void cancel() = 0;
};

}  // namespace brevanholt::platform
