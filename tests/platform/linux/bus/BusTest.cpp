#include "tests/support/CapturedLog.h"
#include "tests/support/PrivateBus.h"

namespace brevanholt::platform {
namespace {

constexpr const char* kEchoInterface = R"(<node><interface name="org.example.Echo">
  <method name="Say"><arg type="s" direction="out"/></method>
  <signal name="Said"/></interface></node>)";

TEST(BusTest, OpensAClosedConnectionAgainWithAllThatWasOnIt) {
  const CapturedLog log;
  const PrivateBus daemon;
  const auto say = [](std::string_view, GVariant*) { return g_variant_new("(s)", "hello"); };
  BusService service(daemon.address(), "org.example.Service");
  BusObject& theirs = service.serve("/theirs", kEchoInterface, say);
  Bus bus(daemon.address());
  BusObject ours(bus, "/ours", kEchoInterface, {.call = say, .property = nullptr});
  int said = 0;
  const auto signals = bus.subscribe({nullptr, "/theirs", "org.example.Echo", "Said"},
                                     [&said](GVariant*) { ++said; });
  std::vector<bool> owners;
  const auto name = bus.watchName("org.example.Service", [&owners](const std::string& owner) {
    owners.push_back(!owner.empty());
  });
  const auto works = [&] {
    EXPECT_EQ(
        replyText(bus, {"org.example.Service", "/theirs", "org.example.Echo", "Say"}, nullptr),
        "('hello',)");
    std::string own;
    bus.whenConnected([&own](GDBusConnection* connection) {
      own = g_dbus_connection_get_unique_name(connection);
    });
    EXPECT_EQ(replyText(service.bus(), {own.c_str(), "/ours", "org.example.Echo", "Say"}, nullptr),
              "('hello',)");
    const int before = said;
    theirs.emit("Said", g_variant_new("()"));
    EXPECT_TRUE(spinUntil([&] { return said == before + 1; }));
  };
  works();

  bus.whenConnected([](GDBusConnection* connection) {
    g_dbus_connection_close_sync(connection, nullptr, nullptr);
  });
  ASSERT_TRUE(spinUntil([&] { return log.count(LogLevel::kInfo, "is there again") == 1; }));
  works();
  EXPECT_EQ(owners, (std::vector<bool>{true, false, true}));
}

}  // namespace
}  // namespace brevanholt::platform
