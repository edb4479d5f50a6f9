#include "Runner/StatusMenu/DesktopStatusMenuController.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>

namespace brevanholt {
namespace {

using namespace platform;
using testing::Contains;
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

// What a view says: texts, colours of dots, values of bars.
class Content final : public ViewVisitor {
 public:
  void visit(const Label& label) override { text << "“" << label.text() << "”"; }
  void visit(const Dot& dot) override {
    static constexpr const char* kNames[] = {"label", "secondary", "tertiary",
                                             "green", "red",       "blue"};
    text << kNames[static_cast<int>(dot.color())] << " ";
  }
  void visit(const ProgressBar& bar) override { text << " bar " << bar.shownValue() << " "; }
  void visit(const Stack& stack) override {
    for (const auto& child : stack.children()) child->accept(*this);
  }
  void visit(const FixedView& view) override { view.content().accept(*this); }

  std::ostringstream text;
};

class DesktopStatusMenuTest : public testing::Test {
 protected:
  // How often that update rebuilt the menu.
  int update(const Value& active, const List& recent = {}, bool available = true) {
    int rebuilds = 0;
    const Connection connection = controller_.menu().itemsChanged.connect([&] { ++rebuilds; });
    controller_.update(available, &active, recent);
    return rebuilds;
  }
  std::vector<std::string> rows() {
    std::vector<std::string> rows;
    for (const auto& item : controller_.menu().items()) {
      Content content;
      if (item->view() != nullptr) item->view()->accept(content);
      rows.push_back(item->isSeparator() ? "---" : item->title() + content.text.str());
    }
    return rows;
  }

  DesktopStatusMenuController controller_;

  static constexpr const char* kHeader = "green “Brevanholt”“Available to nearby devices”";
  static constexpr const char* kActive =
      "“Active transfer”“Sending to Ada”“Sending to Ada.zip” bar 0.25 “25 %”";
};

TEST_F(DesktopStatusMenuTest, HasARowForEachTransferAndOneSeparatorBetweenSections) {
  EXPECT_THAT(rows(), ElementsAre(kHeader, "---",
                                  "“No recent transfers”“New transfer activity will appear here.”",
                                  "---", "Open Brevanholt", "---", "Quit Brevanholt"));
  update(transfer("Sending to Ada"));
  EXPECT_THAT(rows(), ElementsAre(kHeader, "---", kActive, "---", "Open Brevanholt", "---",
                                  "Quit Brevanholt"));
  update(transfer("Sending to Ada"),
         {transfer("A", "complete"), 42.0, Map{{"title", "x"}}, transfer("B", "failed"),
          transfer("C", "cancelled"), transfer("D", "Complete")},
         false);
  EXPECT_THAT(rows(),
              ElementsAre("tertiary “Brevanholt”“Visibility is turned off”", "---", kActive, "---",
                          "“Recent”", "green “A”“A.zip  ·  25 %”", "red “B”“B.zip  ·  25 %”",
                          "secondary “C”“C.zip  ·  25 %”", "blue “D”“D.zip  ·  25 %”", "---",
                          "Open Brevanholt", "---", "Quit Brevanholt"));
}

TEST_F(DesktopStatusMenuTest, ChangesProgressInPlace) {
  update(transfer("A", "sending", 0.25, "25 %"), {transfer("R", "complete")});
  const auto items = controller_.menu().items();

  EXPECT_EQ(update(transfer("A", "waiting", 1.5, "150 %"), {transfer("R", "complete", 0.9)}), 0);

  EXPECT_EQ(controller_.menu().items(), items) << "the very same items";
  EXPECT_THAT(rows()[2], HasSubstr("bar 1 “150 %”"));
  update(transfer("A", "sending", std::numeric_limits<double>::quiet_NaN(), "?"),
         {transfer("R", "complete")});
  EXPECT_THAT(rows()[2], HasSubstr("bar 0 “?”"));
}

TEST_F(DesktopStatusMenuTest, IsBuiltAnewWhenItsStructureChangesOrNothingIsActive) {
  const Value a = transfer("A");
  const Value b = transfer("B");
  const Value r = transfer("R", "complete");
  const Value s = transfer("S", "failed");
  EXPECT_EQ(update({}), 1) << "idle";
  EXPECT_EQ(update(a), 1) << "a transfer began";
  EXPECT_EQ(update(a), 0) << "nothing changed";
  EXPECT_EQ(update(b), 1) << "another transfer";
  EXPECT_EQ(update(b, {r, s}), 1) << "recents came";
  EXPECT_EQ(update(b, {s, r}), 1) << "another order";
  EXPECT_EQ(update(b, {s, transfer("R", "failed")}), 1) << "another state";
  EXPECT_EQ(update(b, {s, transfer("R", "failed")}, false), 1) << "another visibility";
  EXPECT_EQ(update({}, {s, transfer("R", "failed")}, false), 1) << "it ended";
}

TEST_F(DesktopStatusMenuTest, KeepsANamesDirectionFromTheTextBesideIt) {
  update(Value(), {transfer("\u202Egpj")});
  EXPECT_THAT(rows(), Contains(HasSubstr("“\u2068\u202Egpj.zip\u202C\u2069  ·  25 %”")));
}

}  // namespace
}  // namespace brevanholt
