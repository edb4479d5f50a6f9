#pragma once

#include "platform/gtk/GLibPointers.h"
#include "platform/services/NetworkMonitor.h"

#include <thread>

namespace brevanholt::platform {

// Changes of routes from GIO's network monitor (the kernel's, or NetworkManager's where it runs),
// and of links and addresses from the kernel, on a thread and main context of its own. Routes alone
// miss a network that goes where it has no route: without IPv6, a cable that is pulled changes
// none.
class GioNetworkMonitor final : public NetworkMonitor {
 public:
  GioNetworkMonitor() = default;
  ~GioNetworkMonitor() override { cancel(); }
  GioNetworkMonitor(const GioNetworkMonitor&) = delete;
  GioNetworkMonitor& operator=(const GioNetworkMonitor&) = delete;

  void start(const std::string& queueLabel, std::function<void()> updated) override;
  void cancel() override;

 private:
  std::unique_ptr<GMainContext, FreeWith<g_main_context_unref>> context_;
  std::unique_ptr<GMainLoop, FreeWith<g_main_loop_unref>> loop_;
  GObjectPointer<GCancellable> cancellable_;
  std::thread thread_;
};

}  // namespace brevanholt::platform
