#pragma once

#include "platform/linux/GPointers.h"
#include "platform/services/NetworkMonitor.h"

#include <thread>

namespace brevanholt::platform {

// GIO's network monitor on a thread and main context of its own. GIO tells of every interface,
// address and route that comes or goes, from the kernel and, where it runs, from NetworkManager.
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
