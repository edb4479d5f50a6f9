#include "platform/linux/menu/DBusMenuExporter.h"
#include "tests/support/PrivateBus.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace brevanholt::platform {
namespace {

using namespace std::chrono_literals;
using testing::HasSubstr;

constexpr const char* kInterface = "com.canonical.dbusmenu";

std::shared_ptr<Label> line(const std::string& text) {
  return std::make_shared<Label>(text, TextStyle{.size = 12});
}

// A menu on one end of a bus, and a tray that draws it on the other.
class DBusMenuTest : public testing::Test {
 protected:
  DBusMenuTest() {
    show();
    exporter_ = std::make_unique<DBusMenuExporter>(
        host_, menu_, [this](std::uint32_t time) { clickTime_ = time; });
    host_.whenConnected([this](GDBusConnection* connection) {
      service_ = g_dbus_connection_get_unique_name(connection);
    });
    const BusSignal layout{service_.c_str(), nullptr, kInterface, "LayoutUpdated"};
    layouts_ = tray_.subscribe(layout, [this](GVariant*) { ++layoutSignals_; });
    const BusSignal update{service_.c_str(), nullptr, kInterface, "ItemsPropertiesUpdated"};
    updates_ = tray_.subscribe(update, [this](GVariant* parameters) {
      ++updateSignals_;
      lastUpdate_ = GCharPointer(g_variant_print(parameters, FALSE)).get();
    });
  }

  // In new items each time.
  void show(const std::string& title = "Title", SystemColor color = SystemColor::kGreen) {
    using Views = std::vector<std::shared_ptr<View>>;
    bar_ = std::make_shared<ProgressBar>(0.5);
    text_ = line("half_way");
    const auto lines =
        std::make_shared<Stack>(Stack::Axis::kVertical, 1, Views{line(title), bar_, text_});
    const auto row = std::make_shared<Stack>(Stack::Axis::kHorizontal, 8,
                                             Views{std::make_shared<Dot>(color, 7), lines});
    menu_.setItems({MenuItem::of(std::make_shared<FixedView>(280, 44, 12, row)),
                    MenuItem::separator(), MenuItem::command("Quit", "q", [this] { ++quits_; })});
  }
  // The same with one more line before all.
  void showMore() {
    show();
    auto items = menu_.items();
    items.insert(items.begin(),
                 MenuItem::of(std::make_shared<FixedView>(280, 44, 12, line("More"))));
    menu_.setItems(items);
  }
  std::string call(const char* method, GVariant* parameters) {
    return replyText(tray_, {service_.c_str(), "/StatusMenu", kInterface, method}, parameters);
  }
  std::string layoutOf(const char* property = "label") {
    const char* const names[] = {property, nullptr};
    return call("GetLayout", g_variant_new("(ii^as)", 0, -1, names));
  }

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
  int quits_ = 0;
  std::uint32_t clickTime_ = 0;
  std::string lastUpdate_;
};

TEST_F(DBusMenuTest, TellsChangesInPlaceWithoutANewLayoutAndNotTooOften) {
  const std::string before = layoutOf("type");
  const auto start = std::chrono::steady_clock::now();
  for (int step = 1; step <= 1000; ++step) {
    bar_->setValue(step / 1000.0);
    text_->setText(std::to_string(step));
    spinOnce();
  }
  ASSERT_TRUE(spinUntil([this] { return lastUpdate_.find("'1000'") != std::string::npos; }));
  const auto elapsed = std::chrono::steady_clock::now() - start;

  EXPECT_LE(updateSignals_, elapsed / 100ms + 1);
  EXPECT_EQ(layoutSignals_, 0);
  EXPECT_EQ(layoutOf("type"), before) << "the same rows under the same ids";
  EXPECT_THAT(layoutOf(), HasSubstr("<'████████████████████'>"));
}

TEST_F(DBusMenuTest, TellsOnlyWhatIsAnotherWhenTheMenuIsBuiltAnewInTheSameShape) {
  const std::string before = layoutOf();
  for (int round = 0; round < 5; ++round) show();
  EXPECT_EQ(layoutOf(), before);
  show("Another title", SystemColor::kRed);
  ASSERT_TRUE(spinUntil([this] { return updateSignals_ > 0; }));
  EXPECT_THAT(lastUpdate_, HasSubstr("{'label': <'Another title'>, 'icon-data': "));
  EXPECT_EQ(updateSignals_, 1);
  EXPECT_EQ(layoutSignals_, 0);
}

TEST_F(DBusMenuTest, TellsOfOtherRowsOnceAndTakesAClickOnACommandThatWasReplaced) {
  EXPECT_THAT(layoutOf(), HasSubstr("(5, {'label': <'Quit'>}"));
  for (int round = 0; round < 5; ++round) showMore();
  ASSERT_TRUE(spinUntil([this] { return layoutSignals_ > 0; }));
  EXPECT_THAT(layoutOf(), HasSubstr("(11, {'label': <'Quit'>}")) << "no id comes again";
  EXPECT_EQ(layoutSignals_, 1);
  EXPECT_EQ(updateSignals_, 0);

  EXPECT_EQ(call("Event", g_variant_new_parsed("(1, 'clicked', <0>, uint32 0)")),
            "error: There is no menu item 1");
  EXPECT_EQ(call("Event", g_variant_new_parsed("(5, 'clicked', <0>, uint32 1234)")), "()");
  EXPECT_EQ(quits_, 1);
  EXPECT_EQ(clickTime_, 1234);
}

TEST_F(DBusMenuTest, AsksForTheLayoutUntilAllOfItWasFetched) {
  const auto aboutToShow = [this] { return call("AboutToShow", g_variant_new("(i)", 0)); };
  const auto fetch = [this](int row, int depth) {
    const char* const names[] = {nullptr};
    return call("GetLayout", g_variant_new("(ii^as)", row, depth, names));
  };
  EXPECT_EQ(aboutToShow(), "(true,)");
  fetch(5, -1);
  fetch(0, 0);
  EXPECT_EQ(aboutToShow(), "(true,)");
  fetch(0, -1);
  EXPECT_EQ(aboutToShow(), "(false,)");
}

TEST_F(DBusMenuTest, TellsThePropertiesOfTheRowThatHoldsTheOthers) {
  EXPECT_EQ(call("GetGroupProperties", g_variant_new_parsed("([0], @as [])")),
            "([(0, {'children-display': <'submenu'>})],)");
  EXPECT_EQ(call("GetProperty", g_variant_new_parsed("(0, 'children-display')")), "(<'submenu'>,)");
}

TEST_F(DBusMenuTest, CutsLongLinesAndKeepsThemLines) {
  show("one\ntwo " + std::string(200, 'x'));
  EXPECT_THAT(layoutOf(), HasSubstr("'one two " + std::string(31, 'x') + "…'"));
}

}  // namespace
}  // namespace brevanholt::platform
