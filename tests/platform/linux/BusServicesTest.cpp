#include "platform/linux/BusObject.h"
#include "platform/linux/DBusWakeNotices.h"
#include "platform/linux/LinuxProcessActivities.h"
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
  explicit FakeLogind(const std::string& address) : bus_(address) {
    const std::unique_ptr<GDBusNodeInfo, FreeWith<g_dbus_node_info_unref>> description(
        g_dbus_node_info_new_for_xml(
            R"(<node><interface name="org.freedesktop.login1.Manager"><method name="Inhibit">
               <arg type="s" direction="in"/><arg type="s" direction="in"/>
               <arg type="s" direction="in"/><arg type="s" direction="in"/>
               <arg type="h" direction="out"/></method></interface></node>)",
            nullptr));
    static constexpr GDBusInterfaceVTable kTable{
        [](GDBusConnection*, const char*, const char*, const char*, const char*,
           GVariant* parameters, GDBusMethodInvocation* invocation, gpointer self) {
          auto* logind = static_cast<FakeLogind*>(self);
          logind->asked = GCharPointer(g_variant_print(parameters, FALSE)).get();
          logind->invocation_ = invocation;
        },
        nullptr,
        nullptr,
        {}};
    bus_.whenConnected([&](GDBusConnection* connection) {
      g_dbus_connection_register_object(connection, "/org/freedesktop/login1",
                                        description->interfaces[0], &kTable, this, nullptr,
                                        nullptr);
    });
    name_ = std::make_unique<OwnedName>(bus_, "org.freedesktop.login1");
  }

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

  std::string asked;

 private:
  Bus bus_;
  std::unique_ptr<OwnedName> name_;
  GDBusMethodInvocation* invocation_ = nullptr;
  FileDescriptor inhibitor_;
};

class BusServicesTest : public testing::Test {
 protected:
  std::unique_ptr<ProcessActivity> begin(ActivityOptions options) {
    return activities_.begin(options, "Brevanholt file transfer");
  }
  // By a reply on the same connection, what was sent before has come.
  void settle() {
    for (Bus* bus : {&other_, &bus_}) {
      replyText(*bus, {"org.freedesktop.DBus", "/", "org.freedesktop.DBus", "GetId"}, nullptr);
    }
    spinOnce();
  }

  CapturedLog log_;
  PrivateBus privateBus_;
  Bus bus_{privateBus_.address()};
  Bus other_{privateBus_.address()};
  bool pageRuns_ = false;
  LinuxProcessActivities activities_{bus_, [this](bool runs) { pageRuns_ = runs; }};
};

TEST_F(BusServicesTest, KeepsTheSystemAwakeForATransferAlone) {
  FakeLogind logind(privateBus_.address());
  settle();
  auto availability = begin(ActivityOptions::kUserInitiatedAllowingIdleSystemSleep);
  settle();
  EXPECT_EQ(logind.asked, "");
  EXPECT_TRUE(pageRuns_);

  auto transfer = begin(ActivityOptions::kUserInitiated);
  ASSERT_TRUE(spinUntil([&] { return !logind.asked.empty(); }));
  EXPECT_EQ(logind.asked, "('sleep', 'Brevanholt', 'Brevanholt file transfer', 'block')");
  logind.answer();
  settle();
  EXPECT_TRUE(logind.isInhibited());
  availability.reset();
  EXPECT_TRUE(pageRuns_);
  EXPECT_TRUE(logind.isInhibited());
  transfer.reset();
  EXPECT_FALSE(pageRuns_);
  EXPECT_TRUE(spinUntil([&] { return !logind.isInhibited(); }));
}

TEST_F(BusServicesTest, LetsTheSystemSleepWhenTheTransferEndsBeforeTheAnswer) {
  FakeLogind logind(privateBus_.address());
  settle();
  auto transfer = begin(ActivityOptions::kUserInitiated);
  ASSERT_TRUE(spinUntil([&] { return !logind.asked.empty(); }));
  transfer.reset();
  logind.answer();
  EXPECT_TRUE(spinUntil([&] { return !logind.isInhibited(); }));
}

TEST_F(BusServicesTest, SaysOnceThatNothingKeepsTheSystemAwake) {
  for (int round = 0; round < 2; ++round) {
    const auto transfer = begin(ActivityOptions::kUserInitiated);
    settle();
    EXPECT_TRUE(pageRuns_);
  }
  EXPECT_EQ(log_.count(LogLevel::kWarning, "the system may sleep during a transfer"), 1);
}

TEST_F(BusServicesTest, TellsWhenSystemAndScreensWake) {
  std::string told;
  DBusWakeNotices notices(bus_, bus_);
  const Connection system = notices.systemDidWake.connect([&told] { told += "system "; });
  Connection screens = notices.screensDidWake.connect([&told] { told += "screens "; });
  const OwnedName logind(other_, "org.freedesktop.login1");
  const OwnedName screenSaver(other_, "org.freedesktop.ScreenSaver");
  const auto emit = [this](const char* path, const char* interface, const char* signal,
                           GVariant* parameters) {
    other_.whenConnected([&](GDBusConnection* connection) {
      g_dbus_connection_emit_signal(connection, nullptr, path, interface, signal, parameters,
                                    nullptr);
    });
    settle();
  };
  const auto sleep = [&](GVariant* parameters) {
    emit("/org/freedesktop/login1", "org.freedesktop.login1.Manager", "PrepareForSleep",
         parameters);
  };
  const auto screenSaverActive = [&](gboolean active) {
    emit("/org/freedesktop/ScreenSaver", "org.freedesktop.ScreenSaver", "ActiveChanged",
         g_variant_new("(b)", active));
  };
  settle();
  sleep(g_variant_new("(b)", TRUE));
  screenSaverActive(TRUE);
  EXPECT_EQ(told, "");
  sleep(g_variant_new("(b)", FALSE));
  screenSaverActive(FALSE);
  EXPECT_EQ(told, "system screens ");
  sleep(g_variant_new("(s)", "no"));
  screens = Connection();
  screenSaverActive(FALSE);
  EXPECT_EQ(told, "system screens ");
  EXPECT_LE(log_.count(LogLevel::kWarning, "there is no logind"), 1);
}

}  // namespace
}  // namespace brevanholt::platform
