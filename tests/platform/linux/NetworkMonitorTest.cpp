#include "platform/linux/GioNetworkMonitor.h"
#include "tests/support/MainLoop.h"

#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <cstdlib>
#include <thread>

#include <pthread.h>
#include <sched.h>

namespace brevanholt::platform {
namespace {

// Runs `body` on a thread with a network of its own, and says whether the system permits that.
template <class F>
bool inNetworkOfItsOwn(F body) {
  bool isPermitted = false;
  std::thread([&] {
    isPermitted = ::unshare(CLONE_NEWNET) == 0;
    if (isPermitted) body();
  }).join();
  return isPermitted;
}

bool waitFor(const std::atomic<int>& count, int least) {
  return spinUntil([&] { return count >= least; });
}

TEST(NetworkMonitorTest, TellsOfTheStartAndOfLinksAddressesAndRoutes) {
  const bool isPermitted = inNetworkOfItsOwn([] {
    std::atomic<int> updates = 0;
    std::atomic<bool> isNamed = false;
    GioNetworkMonitor monitor;
    monitor.start("brevanholt.network-monitor", [&] {
      std::array<char, 16> name{};
      ::pthread_getname_np(::pthread_self(), name.data(), name.size());
      isNamed = name.data() == std::string_view("network-monitor");
      ++updates;
    });
    EXPECT_TRUE(waitFor(updates, 1)) << "the first follows the start";
    EXPECT_EQ(std::system("ip link add v0 type veth peer name v1"), 0);
    for (const char* change :
         {"link set lo up", "link set v1 up", "link set v0 up", "address add 192.0.2.2/24 dev v0",
          "address add 192.0.2.3/24 dev v0", "address delete 192.0.2.3/24 dev v0",
          "address add 2001:db8::5/64 dev v0 nodad", "route add default via 192.0.2.1",
          "link set v1 down", "link set v0 down"}) {
      const int before = updates;
      EXPECT_EQ(std::system((std::string("ip ") + change).c_str()), 0) << change;
      EXPECT_TRUE(waitFor(updates, before + 1)) << change;
    }
    EXPECT_TRUE(isNamed);
  });
  if (!isPermitted) GTEST_SKIP() << "a network namespace needs root";
}

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
  EXPECT_TRUE(waitFor(updates, seen + 1));
}

}  // namespace
}  // namespace brevanholt::platform
