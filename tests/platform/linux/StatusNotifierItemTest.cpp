#include "platform/linux/StatusNotifierItem.h"
#include "tests/support/CapturedLog.h"
#include "tests/support/PrivateBus.h"

#include <gtest/gtest.h>

#include <optional>

#include <unistd.h>

namespace brevanholt::platform {
namespace {

// The part of a tray that items register with.
class FakeWatcher {
 public:
  explicit FakeWatcher(const std::string& address)
      : bus_(address),
        object_(bus_, "/StatusNotifierWatcher",
                R"(<node><interface name="org.kde.StatusNotifierWatcher">
                   <method name="RegisterStatusNotifierItem"><arg type="s" direction="in"/></method>
                   </interface></node>)",
                {.call =
                     [this](std::string_view, GVariant* parameters) {
                       const char* item = nullptr;
                       g_variant_get(parameters, "(&s)", &item);
                       registered.emplace_back(item);
                       return g_variant_new("()");
                     },
                 .property = [](std::string_view) -> GVariant* { return nullptr; }}),
        name_(bus_, "org.kde.StatusNotifierWatcher") {}

  std::vector<std::string> registered;

 private:
  Bus bus_;
  BusObject object_;
  OwnedName name_;
};

class StatusNotifierItemTest : public testing::Test {
 protected:
  void make(bool opensMenu = false) {
    item_ = std::make_unique<StatusNotifierItem>(
        host_, "/StatusMenu", opensMenu,
        StatusNotifierItem::Events{
            .activated = [this](int x, int y) { click_ = std::pair(x, y); },
            .activationTokenGiven = [this](const std::string& token) { token_ = token; },
            .watcherChanged = [this](bool isThere) { watcherThere_ = isThere; }});
  }
  // By its connection's own name, which it has at once.
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
  std::string call(const char* method, GVariant* parameters) {
    return replyText(
        tray_,
        {connectionName().c_str(), "/StatusNotifierItem", "org.kde.StatusNotifierItem", method},
        parameters);
  }

  CapturedLog log_;
  PrivateBus bus_;
  Bus host_{bus_.address()};
  Bus tray_{bus_.address()};
  std::unique_ptr<StatusNotifierItem> item_;
  std::string itemName_ = "org.kde.StatusNotifierItem-" + std::to_string(::getpid()) + "-1";
  std::optional<std::pair<int, int>> click_;
  std::string token_;
  std::optional<bool> watcherThere_;
};

TEST_F(StatusNotifierItemTest, RegistersWhenAWatcherComesAndAgainWithTheNext) {
  make();
  ASSERT_TRUE(spinUntil([this] { return watcherThere_ == false; }));

  auto watcher = std::make_unique<FakeWatcher>(bus_.address());
  ASSERT_TRUE(spinUntil([&] { return !watcher->registered.empty(); }));
  EXPECT_EQ(watcher->registered, std::vector{itemName_});
  EXPECT_EQ(watcherThere_, true);

  watcher.reset();
  ASSERT_TRUE(spinUntil([this] { return watcherThere_ == false; }));
  watcher = std::make_unique<FakeWatcher>(bus_.address());
  EXPECT_TRUE(spinUntil([&] { return watcher->registered == std::vector{itemName_}; }));
}

TEST_F(StatusNotifierItemTest, SaysWhatItLooksLikeAndTellsOnlyOfChanges) {
  make();
  std::string told;
  const auto subscription =
      tray_.subscribe({nullptr, "/StatusNotifierItem", "org.kde.StatusNotifierItem", "NewToolTip"},
                      [&told](GVariant*) { told += "tooltip "; });
  property("Id");  // by its reply the subscription is in force
  TrayAppearance appearance{.title = "Brevanholt",
                            .toolTip = "Brevanholt — 12 %",
                            .iconName = "icon-symbolic",
                            .iconThemePath = "/icons",
                            .pixmaps = {{.width = 1, .height = 1, .pixels = {255, 1, 2, 3}}}};
  item_->setAppearance(appearance);
  item_->setAppearance(appearance);

  EXPECT_EQ(property("ToolTip"), "(<('', @a(iiay) [], 'Brevanholt — 12 %', '')>,)");
  EXPECT_EQ(property("IconName"), "(<'icon-symbolic'>,)");
  EXPECT_EQ(property("IconThemePath"), "(<'/icons'>,)");
  EXPECT_EQ(property("IconPixmap"), "(<[(1, 1, [byte 0xff, 0x01, 0x02, 0x03])]>,)");
  EXPECT_EQ(property("Title"), "(<'Brevanholt'>,)");
  EXPECT_EQ(property("Menu"), "(<objectpath '/StatusMenu'>,)");
  EXPECT_EQ(property("ItemIsMenu"), "(<false>,)");
  EXPECT_EQ(told, "tooltip ");
}

}  // namespace
}  // namespace brevanholt::platform
