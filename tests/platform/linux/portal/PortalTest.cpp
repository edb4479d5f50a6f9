#include "platform/linux/notifications/PortalNotificationCenter.h"
#include "platform/linux/session/PortalLoginItem.h"
#include "platform/linux/session/PortalSleepInhibitor.h"
#include "platform/linux/storage/PortalSecurityScopes.h"
#include "tests/fakes/FakeUserDefaults.h"
#include "tests/support/CapturedLog.h"
#include "tests/support/PrivateBus.h"
#include "tests/support/TemporaryFolder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <map>

namespace brevanholt::platform {
namespace {

using testing::ElementsAre;
using testing::Pair;

constexpr const char* kBackground = R"(<node><interface name="org.freedesktop.portal.Background">
  <method name="RequestBackground"><arg type="s" direction="in"/><arg type="a{sv}" direction="in"/>
    <arg type="o" direction="out"/></method></interface></node>)";
constexpr const char* kInhibit = R"(<node><interface name="org.freedesktop.portal.Inhibit">
  <method name="Inhibit"><arg type="s" direction="in"/><arg type="u" direction="in"/>
    <arg type="a{sv}" direction="in"/><arg type="o" direction="out"/></method></interface></node>)";
constexpr const char* kNotification =
    R"(<node><interface name="org.freedesktop.portal.Notification">
  <method name="AddNotification"><arg type="s" direction="in"/><arg type="a{sv}" direction="in"/>
  </method><method name="RemoveNotification"><arg type="s" direction="in"/></method>
  <signal name="ActionInvoked"><arg type="s"/><arg type="s"/><arg type="av"/></signal>
  <property name="version" type="u" access="read"/></interface></node>)";
constexpr const char* kRequest = R"(<node><interface name="org.freedesktop.portal.Request">
  <method name="Close"/></interface></node>)";
constexpr const char* kInhibition = "/org/freedesktop/portal/desktop/request/1/inhibition";

// The desktop's portal for one application.
class FakePortal {
 public:
  FakePortal(const std::string& address, std::string application)
      : application_(std::move(application)),
        service_(address, kPortal),
        notification_(service_.serve(
            kPortalPath, kNotification,
            [this](std::string_view method, GVariant* asked) { return notify(method, asked); },
            [](std::string_view) { return g_variant_new_uint32(2); })) {
    service_.serve(kPortalPath, kBackground,
                   [this](std::string_view, GVariant* asked) { return decide(asked); });
    service_.serve(kPortalPath, kInhibit, [this](std::string_view, GVariant* asked) {
      g_variant_get_child(asked, 1, "u", &inhibited);
      return g_variant_new("(o)", kInhibition);
    });
    service_.serve(kInhibition, kRequest, [this](std::string_view, GVariant*) {
      inhibited = 0;
      return g_variant_new("()");
    });
  }

  void invoke(const char* action) {
    notification_.emit("ActionInvoked",
                       g_variant_new_parsed("('transfer', %s, [<@av []>, <{'activation-token': "
                                            "<'token'>}>])",
                                            action));
  }

  bool isGenerous = true;
  std::vector<bool> askedToStart;
  std::uint32_t inhibited = 0;
  std::map<std::string, std::string> shown;

 private:
  // Answers before the call returns, as a portal may that shows no dialog.
  GVariant* decide(GVariant* asked) {
    const GVariantPointer options(g_variant_get_child_value(asked, 1));
    const char* token = nullptr;
    gboolean starts = FALSE;
    g_variant_lookup(options.get(), "handle_token", "&s", &token);
    g_variant_lookup(options.get(), "autostart", "b", &starts);
    askedToStart.push_back(starts != FALSE);
    std::string sender = application_.substr(1);
    std::ranges::replace(sender, '.', '_');
    const std::string path = std::string(kPortalPath) + "/request/" + sender + "/" + token;
    GVariant* response = g_variant_new_parsed("(%u, {'background': <%b>, 'autostart': <%b>})",
                                              isGenerous ? 0U : 1U, isGenerous ? TRUE : FALSE,
                                              isGenerous && starts != FALSE ? TRUE : FALSE);
    service_.bus().whenConnected([&](GDBusConnection* connection) {
      g_dbus_connection_emit_signal(connection, nullptr, path.c_str(),
                                    "org.freedesktop.portal.Request", "Response", response,
                                    nullptr);
    });
    return g_variant_new("(o)", path.c_str());
  }
  GVariant* notify(std::string_view method, GVariant* asked) {
    const char* identifier = nullptr;
    g_variant_get_child(asked, 0, "&s", &identifier);
    if (method == "AddNotification") {
      const GVariantPointer fields(g_variant_get_child_value(asked, 1));
      const char* title = nullptr;
      g_variant_lookup(fields.get(), "title", "&s", &title);
      shown[identifier] = title;
    } else {
      shown.erase(identifier);
    }
    return g_variant_new("()");
  }

  std::string application_;
  BusService service_;
  BusObject& notification_;
};

class PortalTest : public testing::Test {
 protected:
  void startPortal() {
    std::string name;
    bus_.whenConnected([&name](GDBusConnection* connection) {
      name = g_dbus_connection_get_unique_name(connection);
    });
    portal_ = std::make_unique<FakePortal>(private_.address(), name);
    waitForName(bus_, kPortal);
  }

  CapturedLog log_;
  PrivateBus private_;
  Bus bus_{private_.address()};
  std::unique_ptr<FakePortal> portal_;
};

TEST_F(PortalTest, StartsAtLoginOnceThePortalAllowsIt) {
  startPortal();
  FakeUserDefaults store;
  PortalLoginItem item(bus_, store, {"brevanholt", "--login-item"});
  EXPECT_EQ(item.status(), LoginItem::Status::kNotRegistered);

  portal_->isGenerous = false;
  item.registerItem();
  ASSERT_TRUE(spinUntil(
      [&] { return log_.count(LogLevel::kWarning, "does not start the program at login") == 1; }));
  EXPECT_EQ(item.status(), LoginItem::Status::kRequiresApproval);

  portal_->isGenerous = true;
  item.registerItem();
  EXPECT_TRUE(spinUntil([&] { return item.status() == LoginItem::Status::kEnabled; }));

  PortalLoginItem later(bus_, store, {"brevanholt", "--login-item"});
  EXPECT_EQ(later.status(), LoginItem::Status::kEnabled);
  later.askToRunInBackground();
  later.askToRunInBackground();
  later.unregisterItem();
  EXPECT_EQ(later.status(), LoginItem::Status::kNotRegistered);
  EXPECT_TRUE(spinUntil([&] { return portal_->askedToStart.size() == 4; }));
  EXPECT_THAT(portal_->askedToStart, ElementsAre(true, true, true, false));
}

TEST_F(PortalTest, RequiresApprovalAndSaysWhyWithoutAPortal) {
  FakeUserDefaults store;
  PortalLoginItem item(bus_, store, {"brevanholt"});
  item.registerItem();
  EXPECT_TRUE(spinUntil([&] { return log_.count(LogLevel::kWarning, kPortal) == 1; }));
  EXPECT_EQ(item.status(), LoginItem::Status::kRequiresApproval);

  PortalNotificationCenter center(bus_, [](const std::string&) {});
  std::string error;
  center.add({.identifier = "transfer", .title = "a", .body = "b"},
             [&](const Result<Done>& outcome) { error = outcome.error().message(); });
  EXPECT_TRUE(spinUntil([&] { return error.starts_with("Could not show the notification: "); }));
}

TEST_F(PortalTest, ReplacesOpensAndWithdrawsNotificationsByIdentifier) {
  startPortal();
  std::string token;
  int opened = 0;
  PortalNotificationCenter center(bus_, [&](const std::string& given) { token = given; });
  center.setOpenHandler([&] { ++opened; });
  int added = 0;
  for (const char* title : {"Receiving", "Received"}) {
    center.add({.identifier = "transfer", .title = title, .body = ""},
               [&](const Result<Done>& outcome) { added += outcome.ok() ? 1 : 0; });
  }
  ASSERT_TRUE(spinUntil([&] { return added == 2; }));
  EXPECT_THAT(portal_->shown, ElementsAre(Pair("transfer", "Received")));

  portal_->invoke("something else");
  portal_->invoke("open");
  ASSERT_TRUE(spinUntil([&] { return opened > 0; }));
  EXPECT_EQ(std::pair(opened, token), std::pair(1, std::string("token")));

  center.remove("transfer");
  EXPECT_TRUE(spinUntil([&] { return portal_->shown.empty(); }));
}

TEST_F(PortalTest, LetsTheSystemSuspendWhenTheInhibitorEndsEvenBeforeTheAnswer) {
  startPortal();
  PortalSleepInhibitor inhibitor(bus_);
  auto kept = inhibitor.inhibit("a transfer");
  ASSERT_TRUE(spinUntil([&] { return portal_->inhibited == 4; }));
  settle(bus_);
  EXPECT_EQ(portal_->inhibited, 4U);
  kept.reset();
  EXPECT_TRUE(spinUntil([&] { return portal_->inhibited == 0; }));

  portal_->inhibited = 1;
  (void)inhibitor.inhibit("a transfer that is over");
  EXPECT_TRUE(spinUntil([&] { return portal_->inhibited == 0; }));
}

TEST(PortalSecurityScopesTest, FindsAPickedDocumentWhereverDocumentsAre) {
  const TemporaryFolder folder;
  for (const char* run : {"1", "2"}) {
    const auto document = folder.path() / run / "doc/8f3a/photos";
    std::filesystem::create_directories(document);
    std::ofstream(document / "sea.jpg") << "x";
  }
  const PortalSecurityScopes before(folder.path() / "1/doc");
  const PortalSecurityScopes after(folder.path() / "2/doc");
  const auto bookmark = before.bookmark(folder.path() / "1/doc/8f3a/photos/sea.jpg");
  EXPECT_EQ(bookmark, "document:8f3a/photos/sea.jpg");
  EXPECT_EQ(after.resolve(*bookmark)->location, folder.path() / "2/doc/8f3a/photos/sea.jpg");

  const auto outside = folder.path() / "1";
  EXPECT_EQ(after.resolve(*before.bookmark(outside))->location, outside);
  EXPECT_EQ(after.resolve("document:gone"), std::nullopt);
}

}  // namespace
}  // namespace brevanholt::platform
