#include "platform/linux/notifications/FreedesktopNotificationCenter.h"
#include "tests/fakes/FakeUserDefaults.h"
#include "tests/support/CapturedLog.h"
#include "tests/support/PrivateBus.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <mutex>

namespace brevanholt::platform {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Pair;

constexpr const char* kService = "org.freedesktop.Notifications";
constexpr const char* kDescription = R"(<node><interface name="org.freedesktop.Notifications">
  <method name="GetServerInformation"><arg type="s" direction="out"/><arg type="s" direction="out"/>
    <arg type="s" direction="out"/><arg type="s" direction="out"/></method>
  <method name="GetCapabilities"><arg type="as" direction="out"/></method>
  <method name="Notify"><arg type="s" direction="in"/><arg type="u" direction="in"/>
    <arg type="s" direction="in"/><arg type="s" direction="in"/><arg type="s" direction="in"/>
    <arg type="as" direction="in"/><arg type="a{sv}" direction="in"/><arg type="i" direction="in"/>
    <arg type="u" direction="out"/></method>
  <method name="CloseNotification"><arg type="u" direction="in"/></method>
  <property name="Inhibited" type="b" access="read"/>
  </interface></node>)";

// A notification server as the specification has it.
class Server {
 public:
  explicit Server(const std::string& address, std::uint32_t firstNumber = 1)
      : next_(firstNumber), service_(address, kService) {
    service_.serve(
        "/org/freedesktop/Notifications", kDescription,
        [this](std::string_view method, GVariant* parameters) { return call(method, parameters); },
        [](std::string_view) { return g_variant_new_boolean(FALSE); });
  }

  void hang() { service_.hang(); }
  // Holds the replies to Notify back until letAnswersGo().
  void holdAnswers() {
    service_.bus().whenConnected([this](GDBusConnection* connection) {
      const std::lock_guard lock(mutex_);
      filter_ = g_dbus_connection_add_filter(connection, hold, this, nullptr);
    });
  }
  void letAnswersGo() {
    service_.bus().whenConnected([this](GDBusConnection* connection) {
      g_dbus_connection_remove_filter(connection, filter_);
      const std::lock_guard lock(mutex_);
      for (GDBusMessage* message : held_) {
        const GObjectPointer<GDBusMessage> copy(g_dbus_message_copy(message, nullptr));
        g_dbus_connection_send_message(connection, copy.get(), G_DBUS_SEND_MESSAGE_FLAGS_NONE,
                                       nullptr, nullptr);
        g_object_unref(message);
      }
      held_.clear();
    });
  }

  std::string refused;  // the title of a notification that the server does not take
  std::map<std::uint32_t, std::string> shown;
  std::vector<std::string> bodies;

 private:
  // Runs in the connection's own thread.
  static GDBusMessage* hold(GDBusConnection*, GDBusMessage* message, gboolean isIncoming,
                            gpointer self) {
    const std::string_view signature = g_dbus_message_get_signature(message);
    if (isIncoming != FALSE || signature != "u") return message;
    const std::lock_guard lock(mutex_);
    static_cast<Server*>(self)->held_.push_back(message);
    return nullptr;
  }

  GVariant* call(std::string_view method, GVariant* parameters) {
    if (method == "GetServerInformation") return g_variant_new("(ssss)", "test", "", "1", "1.2");
    if (method == "GetCapabilities") {
      return g_variant_new_parsed("(['body', 'body-markup', 'actions'],)");
    }
    std::uint32_t number = 0;
    if (method == "CloseNotification") {
      g_variant_get(parameters, "(u)", &number);
      if (shown.erase(number) == 0) throw PlatformError("no such notification");
      return g_variant_new("()");
    }
    const char* title = nullptr;
    const char* body = nullptr;
    g_variant_get_child(parameters, 1, "u", &number);
    g_variant_get_child(parameters, 3, "&s", &title);
    g_variant_get_child(parameters, 4, "&s", &body);
    if (refused == title) throw PlatformError("this one is refused");
    if (!shown.contains(number)) number = next_++;
    shown[number] = title;
    bodies.emplace_back(body);
    return g_variant_new("(u)", number);
  }

  std::uint32_t next_;
  unsigned filter_ = 0;
  // Guards the next, which the connection's thread fills. It is older than that thread.
  static inline std::mutex mutex_;
  std::vector<GDBusMessage*> held_;
  BusService service_;
};

class NotificationCenterTest : public testing::Test {
 protected:
  void startServer(std::uint32_t firstNumber = 1) {
    server_ = std::make_unique<Server>(address_, firstNumber);
    waitForName(watcher_, kService);
  }
  void post(const std::string& identifier, const std::string& title) {
    center_.add({.identifier = identifier, .title = title, .body = "<b> & co"},
                [this](const Result<Done>& outcome) {
                  outcomes_.push_back(outcome.ok() ? "shown" : outcome.error().message());
                });
  }
  // Waits for all that was posted.
  std::vector<std::string> outcomes(std::size_t count) {
    EXPECT_TRUE(spinUntil([&] { return outcomes_.size() >= count; }));
    settle(bus_);
    return std::exchange(outcomes_, {});
  }
  CapturedLog log_;
  PrivateBus privateBus_;
  std::string address_ = privateBus_.address();
  Bus bus_{address_};
  Bus watcher_{address_};
  FakeUserDefaults store_;
  std::unique_ptr<Server> server_;
  FreedesktopNotificationCenter center_{
      bus_,
      store_,
      NotificationSender{.desktopEntry = "org.example.App", .icon = "icon"},
      [](const std::string&) {},
      {.answer = std::chrono::milliseconds(500), .lateAnswer = std::chrono::seconds(60)}};
  std::vector<std::string> outcomes_;
};

TEST_F(NotificationCenterTest, ReplacesByIdentifierEvenBeforeTheFirstWasAnswered) {
  store_.refusesReading = store_.refusesSetting = true;
  startServer();
  for (const auto& [identifier, title] :
       {std::pair("a", "first"), std::pair("b", "other"), std::pair("a", "second")}) {
    post(identifier, title);
  }
  EXPECT_THAT(outcomes(3), testing::Each("shown"));
  EXPECT_THAT(server_->shown, ElementsAre(Pair(1, "second"), Pair(2, "other")));
  EXPECT_EQ(server_->bodies.front(), "&lt;b&gt; &amp; co");

  post("a", "third");
  for (const char* identifier : {"a", "never", "b"}) center_.remove(identifier);
  EXPECT_TRUE(spinUntil([this] { return server_->shown.empty(); }));
}

TEST_F(NotificationCenterTest, DoesNotTakeTheNumbersOfAnotherServerForItsOwn) {
  startServer();
  post("mine", "mine");
  outcomes(1);

  server_.reset();
  startServer(5);
  server_->shown[1] = "another program's";
  center_.remove("mine");
  settle(bus_);
  post("mine", "mine again");
  EXPECT_THAT(outcomes(1), ElementsAre("shown"));
  EXPECT_THAT(server_->shown, ElementsAre(Pair(1, "another program's"), Pair(5, "mine again")));
}

TEST_F(NotificationCenterTest, AnswersOnceWithoutAServiceAndWhenItHangsAndServesWhenItIsThere) {
  post("a", "too early");
  post("a", "too early as well");
  EXPECT_THAT(outcomes(2), testing::Each(HasSubstr("Could not show the notification: The name")));
  EXPECT_EQ(log_.count(LogLevel::kWarning, "could not be shown: The name"), 1);

  startServer();
  post("a", "now");
  EXPECT_THAT(outcomes(1), ElementsAre("shown"));

  server_->hang();
  post("a", "x");
  post("a", "y");
  EXPECT_THAT(outcomes(2), testing::Each(HasSubstr("Timeout")));
  EXPECT_FALSE(spinUntil([this] { return !outcomes_.empty(); }, std::chrono::milliseconds(100)));
}

TEST_F(NotificationCenterTest, FailsOnlyWhatTheServerRefuses) {
  startServer();
  server_->refused = "bad";
  post("a", "first");
  post("a", "bad");
  post("a", "last");
  EXPECT_THAT(outcomes(3), ElementsAre("shown", HasSubstr("this one is refused"), "shown"));
  EXPECT_EQ(log_.count(LogLevel::kWarning, "this one is refused"), 1);
  EXPECT_THAT(server_->shown, ElementsAre(Pair(1, "last")));

  post("a", "bad");
  center_.remove("a");
  EXPECT_TRUE(spinUntil([this] { return server_->shown.empty(); }));
}

TEST_F(NotificationCenterTest, KnowsANotificationWhoseAnswerCameTooLate) {
  startServer();
  server_->holdAnswers();
  post("replaced", "slow");
  post("removed", "slow");
  EXPECT_THAT(outcomes(2), testing::Each(HasSubstr("too long")));
  center_.remove("removed");
  settle(bus_);
  server_->letAnswersGo();
  EXPECT_TRUE(spinUntil([this] { return server_->shown.size() == 1; }));

  post("replaced", "again");
  EXPECT_THAT(outcomes(1), ElementsAre("shown"));
  EXPECT_THAT(server_->shown, ElementsAre(Pair(testing::_, "again")));
}

TEST_F(NotificationCenterTest, ShowsTheStartOfTextsThatNoDesktopTakes) {
  startServer();
  const std::string title("a\0b\xFF", 4);
  center_.add({.identifier = "a", .title = title, .body = std::string(150 << 20, 'x')},
              [this](const Result<Done>& outcome) {
                outcomes_.emplace_back(outcome.ok() ? "shown" : outcome.error().message());
              });
  EXPECT_THAT(outcomes(1), ElementsAre("shown"));
  EXPECT_THAT(server_->shown, ElementsAre(Pair(1, "a\uFFFDb\uFFFD")));
  EXPECT_EQ(server_->bodies.front().substr(4090), "xxxxxx…");
}

}  // namespace
}  // namespace brevanholt::platform
