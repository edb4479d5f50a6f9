#include "platform/linux/session/LinuxProcessActivities.h"
#include "platform/linux/session/LogindSleepInhibitor.h"
#include "tests/support/CapturedLog.h"
#include "tests/support/PrivateBus.h"

#include <gio/gunixfdlist.h>
#include <gtest/gtest.h>

#include <array>
#include <memory>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace brevanholt::platform {
namespace {

// The part of logind that hands out inhibitors. It answers when the test says so.
class FakeLogind {
 public:
  explicit FakeLogind(const std::string& address) : service_(address, "org.freedesktop.login1") {
    const std::unique_ptr<GDBusNodeInfo, FreeWith<g_dbus_node_info_unref>> description(
        g_dbus_node_info_new_for_xml(
            R"(<node><interface name="org.freedesktop.login1.Manager"><method name="Inhibit">
               <arg type="s" direction="in"/><arg type="s" direction="in"/>
               <arg type="s" direction="in"/><arg type="s" direction="in"/>
               <arg type="h" direction="out"/></method></interface></node>)",
            nullptr));
    static constexpr GDBusInterfaceVTable kTable{
        [](GDBusConnection*, const char*, const char*, const char*, const char*, GVariant*,
           GDBusMethodInvocation* invocation,
           gpointer self) { static_cast<FakeLogind*>(self)->invocation_ = invocation; },
        nullptr,
        nullptr,
        {}};
    service_.bus().whenConnected([&](GDBusConnection* connection) {
      g_dbus_connection_register_object(connection, "/org/freedesktop/login1",
                                        description->interfaces[0], &kTable, this, nullptr,
                                        nullptr);
    });
  }

  [[nodiscard]] bool isAsked() const { return invocation_ != nullptr; }
  void answer() {
    std::array<int, 2> ends{};
    ASSERT_EQ(::pipe2(ends.data(), O_CLOEXEC), 0);
    inhibitor_ = FileDescriptor(ends[0]);
    const FileDescriptor given(ends[1]);
    const GObjectPointer<GUnixFDList> list(g_unix_fd_list_new());
    g_unix_fd_list_append(list.get(), given.get(), nullptr);
    g_dbus_method_invocation_return_value_with_unix_fd_list(std::exchange(invocation_, nullptr),
                                                            g_variant_new("(h)", 0), list.get());
  }
  // Whether anybody has the descriptor that was given.
  [[nodiscard]] bool isInhibited() const {
    pollfd state{.fd = inhibitor_.get(), .events = 0, .revents = 0};
    return ::poll(&state, 1, 0) == 0;
  }

 private:
  BusService service_;
  GDBusMethodInvocation* invocation_ = nullptr;
  FileDescriptor inhibitor_;
};

TEST(ProcessActivitiesTest, LetsTheSystemSleepWhenATransferEndsEvenBeforeTheAnswer) {
  const CapturedLog log;
  const PrivateBus privateBus;
  Bus bus(privateBus.address());
  FakeLogind logind(privateBus.address());
  bool pageRuns = false;
  LogindSleepInhibitor inhibitor(bus);
  LinuxProcessActivities activities(inhibitor, [&pageRuns](bool runs) { pageRuns = runs; });
  for (const bool endsFirst : {false, true}) {
    auto transfer = activities.begin(ActivityOptions::kUserInitiated, "a transfer");
    EXPECT_TRUE(pageRuns);
    ASSERT_TRUE(spinUntil([&] { return logind.isAsked(); }));
    if (endsFirst) transfer.reset();
    logind.answer();
    settle(bus);
    EXPECT_EQ(logind.isInhibited(), !endsFirst);
    transfer.reset();
    EXPECT_FALSE(pageRuns);
    EXPECT_TRUE(spinUntil([&] { return !logind.isInhibited(); }));
  }
}

}  // namespace
}  // namespace brevanholt::platform
