#include "Runner/AppDelegate/DesktopStatusMenuController.h"
#include "tests/support/PrintValue.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

namespace brevanholt {
namespace {

using namespace platform;
using testing::ElementsAre;
using testing::HasSubstr;

Value transfer(const std::string& title, const std::string& state = "sending",
               double progress = 0.25, const std::string& progressLabel = "25 %") {
  return Map{{"title", title},
             {"item", title + ".zip"},
             {"stateKey", state},
             {"progress", progress},
             {"progressLabel", progressLabel}};
}

std::optional<DesktopTransferSnapshot> parse(const Value& value) {
  return DesktopTransferSnapshot::parse(&value);
}

TEST(DesktopTransferSnapshotTest, TakesTextsAsTheyAre) {
  const auto snapshot = parse(Map{{"title", " T "},
                                  {"item", ""},
                                  {"stateKey", "x"},
                                  {"progress", 1.7},
                                  {"progressLabel", "l\n"},
                                  {"more", true}});
  ASSERT_TRUE(snapshot);
  EXPECT_EQ(snapshot->title, " T ");
  EXPECT_EQ(snapshot->item, "");
  EXPECT_EQ(snapshot->progressLabel, "l\n");
  EXPECT_EQ(snapshot->progress, 1.7);
}

TEST(DesktopTransferSnapshotTest, NeedsEveryTextButNoProgress) {
  for (const char* missing : {"title", "item", "stateKey", "progressLabel"}) {
    Map absent;
    Map mistyped;
    for (const char* key : {"title", "item", "stateKey", "progressLabel"}) {
      if (std::string_view(key) != missing) absent.add(key, "x");
      mistyped.add(key, std::string_view(key) != missing ? Value("x") : Value(1.0));
    }
    EXPECT_FALSE(parse(absent)) << missing;
    EXPECT_FALSE(parse(mistyped)) << missing;
  }
  Map texts{{"title", "x"}, {"item", "x"}, {"stateKey", "x"}, {"progressLabel", "x"}};
  EXPECT_EQ(parse(texts)->progress, 0.0);
  for (const auto& [given, progress] :
       {std::pair<Value, double>{"0.5", 0.0}, {{}, 0.0}, {std::int32_t{1}, 1.0}, {-0.2, -0.2}}) {
    Map map = texts;
    map.add("progress", given);
    EXPECT_EQ(parse(map)->progress, progress);
  }
  EXPECT_FALSE(parse({}));
  EXPECT_FALSE(parse(List{}));
  EXPECT_FALSE(DesktopTransferSnapshot::parse(nullptr));
}

// Reads a view as text: what is in it, in order, with style.
class Description final : public ViewVisitor {
 public:
  static std::string of(const View& view) {
    Description description;
    view.accept(description);
    return description.text_;
  }

  void visit(const Label& label) override {
    static constexpr const char* kWeights[] = {"regular", "medium", "semibold"};
    const TextStyle& style = label.style();
    add("“" + label.text() + "” " + number(style.size) + " " +
        kWeights[static_cast<int>(style.weight)] + " " + name(style.color) +
        (style.truncation == Truncation::kMiddle ? " middle" : ""));
  }
  void visit(const Dot& dot) override {
    add("dot " + number(dot.diameter()) + " " + name(dot.color()));
  }
  void visit(const ProgressBar& bar) override { add("bar " + number(bar.shownValue())); }
  void visit(const Stack& stack) override {
    add((stack.axis() == Stack::Axis::kHorizontal ? "row " : "column ") + number(stack.spacing()));
    text_ += " [";
    for (const auto& child : stack.children()) child->accept(*this);
    text_ += " ]";
  }
  void visit(const FixedView& view) override {
    add(number(view.width()) + "×" + number(view.height()) + " padding " +
        number(view.horizontalPadding()) + ":");
    view.content().accept(*this);
  }

 private:
  static std::string number(double value) {
    std::ostringstream text;
    text << value;
    return text.str();
  }
  static std::string name(SystemColor color) {
    static constexpr const char* kNames[] = {"label", "secondary", "tertiary",
                                             "green", "red",       "blue"};
    return kNames[static_cast<int>(color)];
  }
  void add(const std::string& part) { text_ += (text_.empty() ? "" : " ") + part; }

  std::string text_;
};

class DesktopStatusMenuTest : public testing::Test {
 protected:
  void update(const Value& active, const List& recent = {}, bool available = true) {
    controller_.update(available, &active, recent);
  }
  std::vector<std::string> rows() {
    std::vector<std::string> result;
    for (const auto& item : controller_.menu().items()) {
      if (item->isSeparator()) {
        result.emplace_back("---");
      } else if (item->isCommand()) {
        result.push_back(item->title() + " [" + item->keyEquivalent() + "]");
      } else {
        result.push_back(Description::of(*item->view()));
      }
    }
    return result;
  }

  DesktopStatusMenuController controller_;

  static constexpr const char* kHeader =
      "280×44 padding 12: row 8 [ dot 7 green column 1 [ “Brevanholt” 12.5 semibold label "
      "“Available "
      "to nearby devices” 10.5 regular secondary ] ]";
  static constexpr const char* kEmpty =
      "280×46 padding 12: column 2 [ “No recent transfers” 12 medium label “New transfer activity "
      "will appear here.” 10.5 regular secondary ]";
  static constexpr const char* kRecent = "280×24 padding 12: “Recent” 9.5 semibold secondary";
  static constexpr const char* kOpen = "Open Brevanholt []";
  static constexpr const char* kQuit = "Quit Brevanholt [q]";
};

TEST_F(DesktopStatusMenuTest, BeginsIdle) {
  EXPECT_EQ(controller_.menu().minimumWidth, 280);
  EXPECT_THAT(rows(), ElementsAre(kHeader, "---", kEmpty, "---", kOpen, "---", kQuit));
}

TEST_F(DesktopStatusMenuTest, ShowsTheActiveTransferWithoutASecondSeparator) {
  update(transfer("Sending to Ada"));
  EXPECT_THAT(
      rows(),
      ElementsAre(kHeader, "---",
                  "280×88 padding 12: column 3 [ “Active transfer” 9.5 semibold blue “Sending to "
                  "Ada” 12.5 medium label “Sending to Ada.zip” 10.5 regular secondary middle bar "
                  "0.25 “25 %” 10 regular secondary ]",
                  "---", kOpen, "---", kQuit));
}

TEST_F(DesktopStatusMenuTest, ShowsRecentTransfersInTheirColours) {
  update({}, {transfer("A", "complete"), 42.0, Map{{"title", "x"}}, transfer("B", "failed"),
              transfer("C", "cancelled"), transfer("D", "Complete")});
  const auto row = [](const char* color, const std::string& title) {
    return std::string("280×46 padding 12: row 8 [ dot 7 ") + color + " column 1 [ “" + title +
           "” 12 medium label “" + title + ".zip  ·  25 %” 10 regular secondary middle ] ]";
  };
  EXPECT_THAT(rows(),
              ElementsAre(kHeader, "---", kRecent, row("green", "A"), row("red", "B"),
                          row("secondary", "C"), row("blue", "D"), "---", kOpen, "---", kQuit));
}

TEST_F(DesktopStatusMenuTest, ShowsThatVisibilityIsOff) {
  update({}, {}, false);
  EXPECT_THAT(rows().front(), HasSubstr("dot 7 tertiary"));
  EXPECT_THAT(rows().front(), HasSubstr("“Visibility is turned off”"));
}

TEST_F(DesktopStatusMenuTest, ChangesProgressInPlace) {
  update(transfer("A", "sending", 0.25, "25 %"), {transfer("R", "complete")});
  const auto items = controller_.menu().items();
  int rebuilds = 0;
  const Connection connection = controller_.menu().itemsChanged.connect([&] { ++rebuilds; });

  update(transfer("A", "waiting", 1.5, "150 %"), {transfer("R", "complete", 0.9)});

  EXPECT_EQ(rebuilds, 0);
  EXPECT_EQ(controller_.menu().items(), items) << "the very same items";
  EXPECT_THAT(rows()[2], HasSubstr("bar 1 “150 %”"));
  update(transfer("A", "sending", std::numeric_limits<double>::quiet_NaN(), "?"),
         {transfer("R", "complete")});
  EXPECT_THAT(rows()[2], HasSubstr("bar 0 “?”"));
}

TEST_F(DesktopStatusMenuTest, IsBuiltAnewWhenItsStructureChangesOrNothingIsActive) {
  int rebuilds = 0;
  const auto rebuildsAfter = [&](const Value& active, const List& recent, bool available) {
    rebuilds = 0;
    const Connection connection = controller_.menu().itemsChanged.connect([&] { ++rebuilds; });
    update(active, recent, available);
    return rebuilds;
  };
  const Value a = transfer("A");
  Map otherItem = *a.getIf<Map>();
  otherItem.add("item", "else");
  const List recent{transfer("R", "complete"), transfer("S", "failed")};

  EXPECT_EQ(rebuildsAfter({}, {}, true), 1) << "idle";
  EXPECT_EQ(rebuildsAfter({}, {}, true), 1) << "idle still";
  EXPECT_EQ(rebuildsAfter(a, {}, true), 1) << "a transfer began";
  EXPECT_EQ(rebuildsAfter(a, {}, true), 0) << "nothing changed";
  EXPECT_EQ(rebuildsAfter(otherItem, {}, true), 1) << "another item";
  EXPECT_EQ(rebuildsAfter(transfer("B"), {}, true), 1) << "another transfer";
  EXPECT_EQ(rebuildsAfter(transfer("B"), recent, true), 1) << "recents came";
  EXPECT_EQ(rebuildsAfter(transfer("B"), {recent[1], recent[0]}, true), 1) << "another order";
  EXPECT_EQ(rebuildsAfter(transfer("B"), {recent[1], transfer("R", "failed")}, true), 1);
  EXPECT_EQ(rebuildsAfter(transfer("B"), {recent[1], transfer("R", "failed")}, false), 1);
  EXPECT_EQ(rebuildsAfter(transfer("B"), {recent[1], transfer("R", "failed", 1)}, false), 0);
  EXPECT_EQ(rebuildsAfter({}, {recent[1], transfer("R", "failed")}, false), 1) << "it ended";
}

TEST_F(DesktopStatusMenuTest, RunsItsCallbacksWhereTheyAreSet) {
  std::string ran;
  const auto& items = controller_.menu().items();
  const auto activateAll = [&items] {
    for (const auto& item : items) item->activate();
  };
  activateAll();
  controller_.menu().willOpen();
  controller_.onOpen = [&ran] { ran += "open "; };
  controller_.onQuit = [&ran] { ran += "quit "; };
  controller_.onWake = [&ran] { ran += "wake "; };
  activateAll();
  controller_.menu().willOpen();
  EXPECT_EQ(ran, "open quit wake ");
}

}  // namespace
}  // namespace brevanholt
