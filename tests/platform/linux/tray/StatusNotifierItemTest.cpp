#include "platform/linux/tray/StatusNotifierItem.h"
#include "tests/support/CapturedLog.h"
#include "tests/support/PrivateBus.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>

namespace brevanholt::platform {
namespace {

// The part of a tray that items register with.
class FakeWatcher {
 public:
  explicit FakeWatcher(const std::string& address)
      : service_(address, "org.kde.StatusNotifierWatcher"),
        object_(service_.serve(
            "/StatusNotifierWatcher", R"(<node><interface name="org.kde.StatusNotifierWatcher">
               <method name="RegisterStatusNotifierItem"><arg type="s" direction="in"/></method>
               <property name="IsStatusNotifierHostRegistered" type="b" access="read"/>
               </interface></node>)",
            [this](std::string_view, GVariant* parameters) { return add(parameters); },
            [this](std::string_view) { return g_variant_new_boolean(hasHost ? TRUE : FALSE); })) {}

  void setHost(bool isThere) {
    hasHost = isThere;
    object_.emit(isThere ? "StatusNotifierHostRegistered" : "StatusNotifierHostUnregistered",
                 g_variant_new("()"));
  }

  std::vector<std::string> registered;
  bool hasHost = true;
  bool refuses = false;

 private:
  GVariant* add(GVariant* parameters) {
    if (refuses) throw PlatformError("no more icons");
    const char* item = nullptr;
    g_variant_get(parameters, "(&s)", &item);
    registered.emplace_back(item);
    return g_variant_new("()");
  }

  BusService service_;
  BusObject& object_;
};

class StatusNotifierItemTest : public testing::Test {
 protected:
  void make() {
    item_ = std::make_unique<StatusNotifierItem>(
        host_, "/StatusMenu", false,
        StatusNotifierItem::Events{.activated = [](int, int) {},
                                   .activationTokenGiven = [](const std::string&) {},
                                   .shownChanged = [this](bool isShown) { isShown_ = isShown; }});
  }
  // The item registers by its connection's unique name.
  std::string connectionName() {
    std::string name;
    host_.whenConnected([&name](GDBusConnection* connection) {
      name = g_dbus_connection_get_unique_name(connection);
    });
    return name;
  }
  std::string property(const char* name) {
    return replyText(
        tray_,
        {connectionName().c_str(), "/StatusNotifierItem", "org.freedesktop.DBus.Properties", "Get"},
        g_variant_new("(ss)", "org.kde.StatusNotifierItem", name));
  }

  CapturedLog log_;
  PrivateBus bus_;
  Bus host_{bus_.address()};
  Bus tray_{bus_.address()};
  std::unique_ptr<StatusNotifierItem> item_;
  std::optional<bool> isShown_;
};

TEST_F(StatusNotifierItemTest, RegistersWhenAWatcherComesAndAgainWithTheNext) {
  const std::vector<std::string> byItsPath{"/StatusNotifierItem"};
  make();
  ASSERT_TRUE(spinUntil([this] { return isShown_ == false; }));

  auto watcher = std::make_unique<FakeWatcher>(bus_.address());
  ASSERT_TRUE(spinUntil([this] { return isShown_ == true; }));
  EXPECT_EQ(watcher->registered, byItsPath);

  watcher.reset();
  ASSERT_TRUE(spinUntil([this] { return isShown_ == false; }));
  watcher = std::make_unique<FakeWatcher>(bus_.address());
  EXPECT_TRUE(spinUntil([&] { return watcher->registered == byItsPath; }));
}

TEST_F(StatusNotifierItemTest, IsShownOnceAHostDrawsIt) {
  FakeWatcher watcher(bus_.address());
  watcher.hasHost = false;
  make();
  ASSERT_TRUE(spinUntil([this] { return isShown_ == false; }));
  watcher.setHost(true);
  ASSERT_TRUE(spinUntil([this] { return isShown_ == true; }));
  watcher.setHost(false);
  EXPECT_TRUE(spinUntil([this] { return isShown_ == false; }));
}

TEST_F(StatusNotifierItemTest, IsNotShownByAWatcherThatRefusesIt) {
  FakeWatcher watcher(bus_.address());
  watcher.refuses = true;
  make();
  ASSERT_TRUE(spinUntil([this] { return isShown_.has_value(); }));
  EXPECT_EQ(isShown_, false);
  EXPECT_EQ(log_.count(LogLevel::kWarning, "the status tray refuses the icon: no more icons"), 1);
  watcher.refuses = false;
  watcher.setHost(true);
  EXPECT_TRUE(spinUntil([this] { return isShown_ == true; }));
}

TEST_F(StatusNotifierItemTest, SaysWhatItLooksLike) {
  make();
  item_->setAppearance({.title = "Brevanholt",
                        .toolTip = "Brevanholt — 12 %",
                        .iconName = "icon-symbolic",
                        .iconThemePath = "/icons",
                        .pixmaps = {{.width = 1, .height = 1, .pixels = {255, 1, 2, 3}}},
                        .needsAttention = true});
  EXPECT_EQ(property("Status"), "(<'NeedsAttention'>,)");
  EXPECT_EQ(property("ToolTip"), "(<('', @a(iiay) [], 'Brevanholt — 12 %', '')>,)");
  EXPECT_EQ(property("IconPixmap"), "(<[(1, 1, [byte 0xff, 0x01, 0x02, 0x03])]>,)");
  EXPECT_EQ(property("Menu"), "(<objectpath '/StatusMenu'>,)");
}

}  // namespace
}  // namespace brevanholt::platform
