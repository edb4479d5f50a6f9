#include "platform/linux/GioNetworkMonitor.h"
#include "tests/support/MainLoop.h"

#include <gtest/gtest.h>

#include <atomic>

namespace brevanholt::platform {
namespace {

TEST(NetworkMonitorTest, IsSilentOnceCancelledAndMayStartAgain) {
  std::atomic<int> updates = 0;
  GioNetworkMonitor monitor;
  monitor.cancel();
  for (int round = 0; round < 20; ++round) {
    monitor.start("again", [&updates] { ++updates; });
    monitor.cancel();
  }
  const int seen = updates;
  monitor.start("again", [&updates] { ++updates; });
  EXPECT_TRUE(spinUntil([&] { return updates > seen; }));
}

}  // namespace
}  // namespace brevanholt::platform
