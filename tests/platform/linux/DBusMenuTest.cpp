#include "platform/linux/DBusMenuExporter.h"
#include "tests/support/PrivateBus.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace brevanholt::platform {
namespace {

using namespace std::chrono_literals;
using testing::HasSubstr;

std::shared_ptr<Label> line(const std::string& text) {
  return std::make_shared<Label>(text, TextStyle{.size = 12});
}

// A menu on one end of a bus, and a tray that draws it on the other.
class DBusMenuTest : public testing::Test, public MenuDelegate {
 protected:
  DBusMenuTest() {
    menu_.setDelegate(this);
    show();
    exporter_ = std::make_unique<DBusMenuExporter>(host_, menu_);
    host_.whenConnected([this](GDBusConnection* connection) {
      service_ = g_dbus_connection_get_unique_name(connection);
    });
    const BusSignal any{service_.c_str(), nullptr, "com.canonical.dbusmenu", nullptr};
    layouts_ = tray_.subscribe({any.service, nullptr, any.interface, "LayoutUpdated"},
                               [this](GVariant*) { ++layoutSignals_; });
    updates_ = tray_.subscribe({any.service, nullptr, any.interface, "ItemsPropertiesUpdated"},
                               [this](GVariant* parameters) {
                                 ++updateSignals_;
                                 lastUpdate_ =
                                     GCharPointer(g_variant_print(parameters, FALSE)).get();
                               });
  }
  void menuWillOpen() override { ++openings_; }

  // The same structure each time, in new items.
  void show() {
    bar_ = std::make_shared<ProgressBar>(0.5);
    text_ = line("half_way");
    const auto row = std::make_shared<Stack>(
        Stack::Axis::kHorizontal, 8,
        std::vector<std::shared_ptr<View>>{
            std::make_shared<Dot>(SystemColor::kGreen, 7),
            std::make_shared<Stack>(
                Stack::Axis::kVertical, 1,
                std::vector<std::shared_ptr<View>>{line("Title"), bar_, text_})});
    menu_.setItems({MenuItem::of(std::make_shared<FixedView>(280, 44, 12, row)),
                    MenuItem::separator(),
                    MenuItem::command("Quit", "q", [this] { ++activations_; })});
  }
  std::string call(const char* method, GVariant* parameters) {
    return replyText(tray_, {service_.c_str(), "/StatusMenu", "com.canonical.dbusmenu", method},
                     parameters);
  }
  std::string layout() {
    GVariant* names = g_variant_new_array(G_VARIANT_TYPE_STRING, nullptr, 0);
    return call("GetLayout", g_variant_new("(ii@as)", 0, -1, names));
  }
  std::string layoutOf(const char* property) {
    const char* const names[] = {property, nullptr};
    return call("GetLayout", g_variant_new("(ii^as)", 0, -1, names));
  }
  std::string event(int id, const char* kind) {
    return call("Event", g_variant_new("(isvu)", id, kind, g_variant_new_int32(0), 0U));
  }
  std::string aboutToShow(int id) { return call("AboutToShow", g_variant_new("(i)", id)); }

  PrivateBus bus_;
  Bus host_{bus_.address()};
  Bus tray_{bus_.address()};
  Menu menu_;
  std::shared_ptr<ProgressBar> bar_;
  std::shared_ptr<Label> text_;
  std::unique_ptr<DBusMenuExporter> exporter_;
  std::string service_;
  BusSubscription layouts_;
  BusSubscription updates_;
  int layoutSignals_ = 0;
  int updateSignals_ = 0;
  std::string lastUpdate_;
  int openings_ = 0;
  int activations_ = 0;
};

TEST_F(DBusMenuTest, SaysItsRowsAsLines) {
  EXPECT_EQ(layoutOf("label"),
            "(1, (0, {}, [<(1, {'label': <'Title'>}, @av [])>, <(2, {'label': "
            "<'██████████░░░░░░░░░░'>}, @av [])>, <(3, {'label': <'half__way'>}, @av [])>, "
            "<(4, @a{sv} {}, @av [])>, <(5, {'label': <'Quit'>}, @av [])>]))");
  EXPECT_THAT(layoutOf("enabled"), HasSubstr("(1, {'enabled': <false>}"));
  EXPECT_THAT(layoutOf("enabled"), HasSubstr("(5, @a{sv} {}"));
  EXPECT_THAT(layoutOf("type"), HasSubstr("(4, {'type': <'separator'>}"));
  EXPECT_THAT(layoutOf("shortcut"), HasSubstr("(5, {'shortcut': <[['Control', 'q']]>}"));
  EXPECT_THAT(layoutOf("icon-data"), HasSubstr("(1, {'icon-data': <[byte 0x89, 0x50, 0x4e, 0x47"));
  EXPECT_THAT(layoutOf("icon-data"), HasSubstr("(2, @a{sv} {}"));
}

TEST_F(DBusMenuTest, TellsChangesInPlaceWithoutANewLayoutAndNotTooOften) {
  const std::string before = layoutOf("type");
  const auto start = std::chrono::steady_clock::now();
  for (int step = 1; step <= 1000; ++step) {
    bar_->setValue(step / 1000.0);
    text_->setText(std::to_string(step));
    spinOnce();
    if (step % 4 == 0) g_usleep(1000);
  }
  ASSERT_TRUE(spinUntil([this] { return lastUpdate_.find("'1000'") != std::string::npos; }));
  const auto elapsed = std::chrono::steady_clock::now() - start;

  EXPECT_LE(updateSignals_, elapsed / 100ms + 1);
  EXPECT_EQ(layoutSignals_, 0);
  EXPECT_EQ(layoutOf("type"), before) << "the same rows under the same ids";
  EXPECT_THAT(layoutOf("label"), HasSubstr("<'████████████████████'>"));
}

TEST_F(DBusMenuTest, TellsOfANewLayoutOnceAndGivesItNewIds) {
  EXPECT_THAT(layout(), HasSubstr("(1, (0,"));
  text_->setText("gone with its item");
  for (int round = 0; round < 5; ++round) show();
  ASSERT_TRUE(spinUntil([this] { return layoutSignals_ > 0; }));
  const std::string after = layoutOf("label");
  EXPECT_THAT(after, HasSubstr("(6, (0, {}, [<(26, {'label': <'Title'>}"));
  EXPECT_EQ(layoutSignals_, 1);
  EXPECT_EQ(updateSignals_, 0);
  EXPECT_EQ(event(1, "clicked"), "error: There is no menu item 1");
}

TEST_F(DBusMenuTest, AnswersTruthfullyWhetherItNeedsAnUpdateBeforeItIsShown) {
  EXPECT_EQ(aboutToShow(0), "(true,)") << "the tray has not asked for a layout yet";
  layout();
  EXPECT_EQ(aboutToShow(0), "(false,)");
  show();
  EXPECT_EQ(aboutToShow(0), "(true,)");
  layout();
  EXPECT_EQ(call("AboutToShowGroup", g_variant_new_parsed("([0, 99],)")), "([], [99])");
  EXPECT_EQ(openings_, 4);
  event(0, "opened");
  EXPECT_EQ(openings_, 4) << "the opening that was announced";
  event(0, "closed");
  event(0, "opened");
  EXPECT_EQ(openings_, 5);
}

}  // namespace
}  // namespace brevanholt::platform
